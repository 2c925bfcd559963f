"""The stock of a small shop: GET /items lists it, POST /items/<name>/order takes one off it."""

import json
import os
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from threading import Lock

stock = {"lamp": 4, "desk": 2, "chair": 6}
lock = Lock()


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path != "/items":
            self.answer(404, {"error": "there is only /items"})
            return
        with lock:
            self.answer(200, stock)

    def do_POST(self):
        match self.path.split("/"):
            case ["", "items", name, "order"] if name in stock:
                with lock:
                    if stock[name] == 0:
                        self.answer(409, {"error": f"no {name} left"})
                        return
                    stock[name] -= 1
                    self.answer(200, stock)
            case _:
                self.answer(404, {"error": "no such item"})

    def answer(self, status, value):
        body = json.dumps(value).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


server = ThreadingHTTPServer(("127.0.0.1", int(os.environ.get("PORT", "8200"))), Handler)
print(f"Shop API on http://localhost:{server.server_port}", flush=True)
server.serve_forever()
