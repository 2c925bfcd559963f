"""The projects that scripts/screenshots shows, with the programs that play their tools."""

import json
import os
import pathlib
import shutil
import subprocess
import time

WRAPPERS = ("/usr/lib/*/libnss_wrapper.so", "/usr/lib64/libnss_wrapper.so")
SERVER = (
    "exec python3 -c 'import http.server as h; h.ThreadingHTTPServer.allow_reuse_address = True; "
    's = h.ThreadingHTTPServer(("127.0.0.1", %d), type("Quiet", (h.SimpleHTTPRequestHandler,), {"log_message": lambda *_: None})); '
    'print(%s, flush=True); s.serve_forever()\''
)
# What is found before the real ones. An install of the folder "api" waits until it is told to fail.
TOOLS = {
    "pnpm": """case $PWD in
*/api)
    echo 'Progress: resolved 118, reused 96, downloaded 14, added 0'
    until [ -e ~/.installed ]; do sleep 0.1; done
    echo ' ERR_PNPM_NO_MATCHING_VERSION  No matching version found for express-rate@^9.1.0'
    exit 1 ;;
esac
echo 'Done in 1.2s'
""",
    "claude": """[ "$1" = --version ] && { echo '2.1.4 (Claude Code)'; exit; }
case $ORV_TASK in
*pagination*) echo '# Sorted by (created_at, id).' >>main.py; cat ~/.streams/pagination; exit ;;
*Django*) echo 'error: could not reach the index of packages' >&2; exit 1 ;;
*gift*) cat ~/.streams/gifts ;;
*) cat ~/.streams/coupons ;;
esac
exec sleep 1000
""",
    "codex": "[ \"$1\" = --version ] && echo 'codex-cli 0.42.0'\n",
    "flutter": """[ "$1" = devices ] && cat <<'END'
[{"name": "Linux", "id": "linux"}, {"name": "Chrome", "id": "chrome"}, {"name": "Pixel 9", "id": "R5CT10"}]
END
exit 0
""",
}
AVDS = "Pixel_9_API_35\nPixel_7_API_34\nPixel_Tablet_API_35\n"


def stream(*events, cost=None, said=None):
    """What an agent prints: texts, and pairs of a tool and what it is used on."""
    lines = [{"type": "system", "subtype": "init", "session_id": "5f2c7a90", "tools": []}]
    for number, event in enumerate(events):
        content = {"type": "text", "text": event}
        if isinstance(event, tuple):
            tool, key, value = event
            content = {"type": "tool_use", "id": f"use{number}", "name": tool, "input": {key: value}}
        lines.append({"type": "assistant", "session_id": "5f2c7a90",
                      "message": {"id": f"m{number}", "role": "assistant", "content": [content]}})
    if said:
        lines.append({"type": "result", "subtype": "success", "is_error": False, "result": said, "session_id": "5f2c7a90",
                      "total_cost_usd": cost})
    return "".join(json.dumps(line) + "\n" for line in lines)


STREAMS = {
    "coupons": stream(
        "I'll look at how totals are computed, then add the coupon model and a test.", ("Read", "file_path", "cart.py"),
        ("Grep", "pattern", "Depends\\(current_cart\\)"), ("Write", "file_path", "coupon.py"),
        ("Edit", "file_path", "cart.py"), ("Bash", "command", ".venv/bin/python -m pytest api/tests -q")),
    "gifts": stream(("Read", "file_path", "product.py"), ("Edit", "file_path", "coupon.py")),
    "pagination": stream(
        ("Read", "file_path", "main.py"), ("Edit", "file_path", "main.py"), ("Bash", "command", "pytest -q"), cost=0.42,
        said="The test relied on insertion order. I sorted the cursor by `(created_at, id)` and added an index for it. "
             "All 48 tests pass."),
}
TASKS = (
    ("shop", "Apply coupon codes at checkout", "Percent only; refuse expired codes with a clear message"),
    ("shop", "Cache product images", ""),
    ("shop", "Fix totals rounding for EUR", ""),
    ("atlas-api", "Return 422 for an unknown cursor", "Now it answers 500 when the cursor is from another list"),
    ("pocket-flutter", "Dark mode for the onboarding pages", ""),
)
DONE_TASKS = (("shop", "Show stock on product pages"), ("shop", "Move cart queries behind a repository"))


class Projects:
    """A folder of projects whose services say what real ones would, and then wait."""

    def __init__(self, work):
        self.home = work / "sam"
        self.root = self.home / "Documents/Quillmere"
        self.support = work / "support"
        self.overrides = {}
        self.root.mkdir(parents=True)
        self.environment = dict(os.environ, HOME=str(self.home), ORV_SUPPORT_DIR=str(self.support), SHELL="/bin/sh")
        for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "ZDOTDIR", "BASH_ENV", "ENV"):
            self.environment.pop(name, None)
        self.account(work)
        self.evening()
        self.identity(True)
        self.tools()
        self.make()

    def account(self, work):
        """The account of the process is Sam's, whose home folder is this one."""
        shell = shutil.which("zsh") or shutil.which("bash")
        names = (work / "passwd", work / "group")
        names[0].write_text(f"sam:x:{os.getuid()}:{os.getgid()}:Sam:{self.home}:{shell}\n")
        names[1].write_text(f"sam:x:{os.getgid()}:\n")
        library = [str(path) for pattern in WRAPPERS for path in pathlib.Path("/").glob(pattern.lstrip("/"))]
        self.environment |= {"LD_PRELOAD": library[0], "NSS_WRAPPER_PASSWD": str(names[0]), "SHELL": shell,
                             "NSS_WRAPPER_GROUP": str(names[1]), "USER": "sam", "LOGNAME": "sam"}

    def evening(self):
        """The local time of day is always the same one: 18:42."""
        now = time.gmtime()
        ahead = (18 * 60 + 42 - now.tm_hour * 60 - now.tm_min + 11 * 60) % (24 * 60) - 11 * 60
        self.environment["TZ"] = f"<sam>{'-' if ahead >= 0 else '+'}{abs(ahead) // 60}:{abs(ahead) % 60:02}"

    def identity(self, known):
        user = "[user]\n\tname = Sam Rivera\n\temail = sam@example.org\n" if known else "[user]\n\tuseConfigOnly = true\n"
        (self.home / ".gitconfig").write_text(user + "[init]\n\tdefaultBranch = main\n")

    def tools(self):
        for name, text in TOOLS.items():
            self.program(f".local/bin/{name}", text)
        self.program("Android/emulator/emulator", f"printf '{AVDS}'\n")
        self.environment["ANDROID_HOME"] = str(self.home / "Android")
        for name, text in STREAMS.items():
            self.write(self.home / ".streams" / name, text)
        for profile in (".zprofile", ".profile", ".bash_profile"):
            self.write(self.home / profile, "PATH=\"$HOME/.local/bin:$PATH\"\n")
        self.write(self.home / ".zshrc", "PROMPT='%B%F{green}➜%f  %F{cyan}%1~%f%b '\n")

    def program(self, path, text):
        self.write(self.home / path, "#!/bin/sh\n" + text)
        (self.home / path).chmod(0o755)

    def write(self, path, text):
        path = self.root / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def git(self, project, *words):
        subprocess.run(["git", "-C", str(self.root / project), *words], env=self.environment, check=False,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def repository(self, project, message="Begin", branch=None):
        self.git(project, "init", "-q")
        self.commit(project, message)
        if branch:
            self.git(project, "switch", "-qc", branch)

    def commit(self, project, message):
        self.git(project, "add", "-A")
        self.git(project, "commit", "-q", "--allow-empty", "-m", message)

    def upstream(self, project, ahead=(), behind=()):
        """A bare repository beside the home folder, in which some commits are missing, and which has some more."""
        bare = self.home.parent / "remotes" / f"{pathlib.Path(project).name}.git"
        for message in behind:
            self.commit(project, message)
        subprocess.run(["git", "clone", "-q", "--bare", str(self.root / project), str(bare)], env=self.environment, check=False)
        self.git(project, "remote", "add", "origin", str(bare))
        self.git(project, "fetch", "-q")
        self.git(project, "branch", "-q", "-u", "origin/HEAD")
        branch = subprocess.run(["git", "-C", str(self.root / project), "branch", "--show-current"], env=self.environment,
                                check=False, capture_output=True, text=True).stdout.strip()
        self.git(project, "branch", "-q", "-u", f"origin/{branch}")
        if behind:
            self.git(project, "reset", "-q", "--hard", f"HEAD~{len(behind)}")
        for message in ahead:
            self.write(f"{project}/NEWS.md", f"- {message}\n")
            self.commit(project, message)

    def node(self, project, tools, installed=True):
        name = project.rsplit("/")[-1]
        self.write(f"{project}/package.json", json.dumps(
            {"name": name, "scripts": {"dev": tools}, "dependencies": {tools: "1"}}, indent=2) + "\n")
        self.write(f"{project}/pnpm-lock.yaml", "lockfileVersion: '9.0'\n")
        self.write(f"{project}/.gitignore", "node_modules\n.venv\n")
        if installed:
            (self.root / project / "node_modules").mkdir()

    def python(self, project, framework):
        self.write(f"{project}/requirements.txt", framework + "\n")
        self.write(f"{project}/main.py", "from fastapi import FastAPI\n\napp = FastAPI()\n\n\n@app.get(\"/\")\ndef index():\n    return {\"ok\": True}\n")
        self.write(f"{project}/.gitignore", ".venv\n")
        self.write(f"{project}/.venv/bin/python", "")

    def rust(self, project, more=""):
        self.write(f"{project}/Cargo.toml", f'[package]\nname = "{project.rsplit("/")[-1]}"\nversion = "0.1.0"\n\n[dependencies]\n{more}')

    def runs(self, project, kind, line):
        self.overrides[f"{self.root / project}|{kind}"] = {"command": f"cd '{self.root / project}' && {line}"}

    def serves(self, project, kind, port, lines=()):
        said = json.dumps("\n".join([*lines, f"Ready on http://localhost:{port}"])).replace("'", "\\u0027")
        self.runs(project, kind, SERVER % (port, said))

    def make(self):
        self.node("docs-site", "vite")
        self.repository("docs-site")
        self.runs("docs-site", "frontend", "exec sleep 1000")
        self.rust("ledger")
        self.rust("billing-worker", 'axum = "0.8"\n')
        self.rust("experiments/ray")
        self.python("experiments/sketch", "flask")
        self.node("pulse", "vite")
        for project in ("billing-worker", "experiments/ray", "experiments/sketch", "pulse"):
            self.repository(project)
        self.client_work()
        self.atlas()
        self.python("field-notes", "django")
        self.write("field-notes/manage.py", "# django\n")
        self.repository("field-notes")
        self.upstream("field-notes", ahead=["Keep the notes of a day together"])
        self.serves("field-notes", "backend", 8001, ["Watching for file changes with StatReloader", "Performing system checks..."])
        self.write("pocket-flutter/.dart_tool/package_config.json", "{}")
        self.write("pocket-flutter/.gitignore", ".dart_tool\n")
        self.write("pocket-flutter/pubspec.yaml", "name: pocket\ndependencies:\n  flutter:\n    sdk: flutter\n")
        self.repository("pocket-flutter", branch="develop")
        self.write("pocket-flutter/lib/theme.dart", "final dark = ThemeData.dark();\n")
        self.write("pocket-flutter/lib/main.dart", "void main() => runApp(const Pocket());\n")
        self.shop()

    def client_work(self):
        self.write("client-work/harbor/compose.yaml", "services:\n  web:\n    image: nginx\n")
        self.node("client-work/landing-page", "vite")
        self.node("client-work/mail-preview", "express")
        self.node("client-work/storefront/web", "nuxt", installed=False)
        self.node("client-work/storefront/api", "express", installed=False)
        for name in ("harbor", "mail-preview", "storefront"):
            self.repository(f"client-work/{name}")
        self.conflict()

    def atlas(self):
        self.python("atlas-api", "fastapi")
        self.repository("atlas-api", branch="feat/pagination")
        self.upstream("atlas-api", behind=["Answer 422", "Name the cursor", "Test the last page"])
        for number in range(10):
            self.write(f"atlas-api/pages_{number}.py", f"SIZE = {number}\n")
        self.write("atlas-api/main.py", "# not there yet\n")
        self.runs("atlas-api", "backend", "echo \"ModuleNotFoundError: No module named 'fastapi'\"; exit 1")

    def shop(self):
        self.node("shop/web", "next")
        self.python("shop/api", "fastapi")
        self.write("shop/compose.yaml", "services:\n  db:\n    image: postgres\n")
        self.write("shop/README.md", "# Shop\n\nA small shop: a front end and its API.\n\n## Running\n\n- `pnpm dev` in web\n- `uvicorn main:app` in api\n")
        page = ["export function price(cents: number, currency = \"EUR\") {", "  // What is shown to the customer.",
                "  const value = cents / 100;", "  return value.toFixed(2) + \" \" + currency;", "}", ""]
        for name in ("cart", "order", "stock", "customer"):
            page += [f"export const {name} = (id: string) => fetch(`/api/{name}/${{id}}`).then(r => r.json());", ""]
        self.write("shop/web/src/price.ts", "\n".join(page))
        self.write("shop/web/src/app.tsx", "import { price } from \"./price\";\n\nexport default () => <main>{price(1999)}</main>;\n")
        self.git("shop", "init", "-q")
        for message in ("Begin with the shop", "Show the price with its currency", "Keep the cart between visits",
                        "Ask the stock before an order is taken", "Let the customer choose a language"):
            self.write("shop/api/notes.txt", message + "\n")
            self.commit("shop", message)
        self.git("shop", "branch", "checkout")
        self.git("shop", "branch", "payments/sepa")
        self.upstream("shop", ahead=["Write down what is sold out", "Say when it comes back"], behind=["Round to the cent"])
        self.write("shop/api/stashed.txt", "later\n")
        self.git("shop", "stash", "-q", "-u", "-m", "A first try of vouchers")
        page[1] = "  // What is shown to the customer, in his own notation."
        page[3] = "  return new Intl.NumberFormat(\"de\", { style: \"currency\", currency }).format(value);"
        self.write("shop/web/src/price.ts", "\n".join(page + ["export const vat = 0.19;", ""]))
        self.write("shop/web/src/vat.ts", "export const vat = 0.19;\n")
        self.write("shop/api/coupon.py", "class Coupon:\n    percent: int\n")
        self.write("shop/api/test_coupon.py", "def test_percent():\n    assert True\n")
        self.write("shop/api/main.py", "from fastapi import FastAPI\n\napp = FastAPI(title=\"Shop\")\n")
        self.git("shop", "add", "api/main.py")
        self.serves("shop/web", "frontend", 3000, [
            "   \x1b[1m▲ Next.js 15.1.4\x1b[0m", " \x1b[32m✓\x1b[0m Starting...", " \x1b[32m✓\x1b[0m Ready in 1642ms",
            " \x1b[35m○\x1b[0m Compiling /checkout ...", " \x1b[32m✓\x1b[0m Compiled /checkout in 812ms (1187 modules)",
            " GET /checkout \x1b[32m200\x1b[0m in 934ms", " GET /api/cart \x1b[32m200\x1b[0m in 41ms",
            " \x1b[33m⚠\x1b[0m Fast Refresh had to perform a full reload"])
        self.serves("shop/api", "backend", 8000, [
            "\x1b[32mINFO\x1b[0m:     Started server process [\x1b[36m41822\x1b[0m]",
            "\x1b[32mINFO\x1b[0m:     Waiting for application startup.", "\x1b[32mINFO\x1b[0m:     Application startup complete.",
            "\x1b[32mINFO\x1b[0m:     \x1b[1m\"GET /cart/total\"\x1b[0m \x1b[32m200 OK\x1b[0m",
            "\x1b[33mWARNING\x1b[0m:  WatchFiles detected changes in 'app/routers/cart.py'. Reloading...",
            "\x1b[32mINFO\x1b[0m:     \x1b[1m\"POST /cart/items\"\x1b[0m \x1b[32m201 Created\x1b[0m",
            "\x1b[32mINFO\x1b[0m:     \x1b[1m\"GET /cart/total?coupon=OLD\"\x1b[0m \x1b[33m409 Conflict\x1b[0m"])
        self.runs("shop", "docker", "echo 'Cannot connect to the Docker daemon. Is it running?'; exit 1")

    def conflict(self):
        self.write("client-work/landing-page/index.html", "<h1>Hello</h1>\n")
        self.repository("client-work/landing-page", branch="bolder")
        self.write("client-work/landing-page/index.html", "<h1>Hello!</h1>\n")
        self.commit("client-work/landing-page", "Be bolder")
        self.git("client-work/landing-page", "switch", "-q", "main")
        self.git("client-work/landing-page", "switch", "-qc", "redesign")
        self.write("client-work/landing-page/index.html", "<h1>Good day</h1>\n")
        self.commit("client-work/landing-page", "Be politer")
        self.git("client-work/landing-page", "merge", "bolder")

    def settings(self, look, **more):
        shutil.rmtree(self.support, ignore_errors=True)
        self.support.mkdir(parents=True)
        (self.support / "overrides.json").write_text(json.dumps(self.overrides))
        pinned = [str(self.root / name) for name in ("shop", "atlas-api", "field-notes", "pocket-flutter")]
        settings = {"displayName": "Sam", "scanRoot": f"file://{self.root}", "showDockIcon": True, "appearance": look,
                    "theme": "ember", "pinnedProjectIDs": pinned, "onboardingCompleted": True} | more
        (self.support / "settings.json").write_text(json.dumps(settings))

    def tasks(self, program):
        def tell(*words):
            said = subprocess.run([program, "tasks", *words, "--json"], env=self.environment, check=True, capture_output=True).stdout
            return json.loads(said)["id"]

        for project, title in DONE_TASKS:
            tell("done", tell("add", project, title))
        for project, title, notes in TASKS:
            tell("add", project, title, "--notes", notes)
