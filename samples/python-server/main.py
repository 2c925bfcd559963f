"""A reading list: a page at /, the same books as JSON at /books."""

import html
import json
import os
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

BOOKS = json.loads(Path(__file__).with_name("books.json").read_text(encoding="utf-8"))
PAGE = """<!doctype html><meta charset="utf-8"><title>Reading list</title>
<style>body {{ font: 18px/1.6 system-ui, sans-serif; margin: 4rem auto; max-width: 34rem }}</style>
<h1>Reading list</h1><ol>{items}</ol><p>{pages} pages in all.</p>"""


def page():
    items = "".join(f"<li>{html.escape(book['title'])}, {html.escape(book['author'])}</li>" for book in BOOKS)
    return PAGE.format(items=items, pages=sum(book["pages"] for book in BOOKS))


class Handler(BaseHTTPRequestHandler):
    routes = {
        "/": lambda: ("text/html; charset=utf-8", page()),
        "/books": lambda: ("application/json", json.dumps(BOOKS)),
    }

    def do_GET(self):
        route = self.routes.get(self.path)
        if route is None:
            self.send_error(404)
            return
        kind, text = route()
        body = text.encode()
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


server = ThreadingHTTPServer(("127.0.0.1", int(os.environ.get("PORT", "8100"))), Handler)
print(f"{len(BOOKS)} books at http://localhost:{server.server_port}", flush=True)
server.serve_forever()
