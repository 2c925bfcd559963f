#include "BenchTree.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orv::bench {
namespace {

struct File {
    std::string_view path;
    std::string_view text;
};

constexpr std::string_view nextPackage = R"({
  "name": "site", "version": "0.4.1", "private": true,
  "scripts": { "dev": "next dev", "build": "next build", "start": "next start", "lint": "eslint ." },
  "dependencies": { "next": "14.2.3", "react": "18.3.1", "react-dom": "18.3.1", "zod": "3.23.8", "swr": "2.2.5" },
  "devDependencies": { "typescript": "5.4.5", "eslint": "8.57.0", "prettier": "3.2.5", "vitest": "1.6.0" }
})";
constexpr std::string_view vitePackage = R"({
  "name": "web", "private": true, "type": "module",
  "scripts": { "dev": "vite", "build": "vite build", "preview": "vite preview" },
  "dependencies": { "react": "18.3.1", "react-dom": "18.3.1" }, "devDependencies": { "vite": "5.2.11" }
})";
constexpr std::string_view expressPackage = R"({
  "name": "service", "main": "server.js", "scripts": { "start": "node server.js", "test": "node --test" },
  "dependencies": { "express": "4.19.2", "pino": "9.1.0", "pg": "8.11.5" }
})";

constexpr std::array nextFiles{
    File{"package.json", nextPackage}, File{"package-lock.json", "{}\n"}, File{"tsconfig.json", "{}\n"},
    File{"next.config.js", "export default {};\n"}};
constexpr std::array fastApiFiles{
    File{"requirements.txt", "fastapi==0.111.0\nuvicorn==0.29.0\nsqlalchemy==2.0.30\n"},
    File{"main.py", "from fastapi import FastAPI\n\napp = FastAPI()\n"}};
constexpr std::array goFiles{
    File{"go.mod", "module example.com/m\n\ngo 1.22\n\nrequire github.com/gin-gonic/gin v1.10.0\n"},
    File{"go.sum", "\n"}, File{"main.go", "// Serves.\npackage main\n\nfunc main() {}\n"}};
constexpr std::array fullStackFiles{
    File{"web/package.json", vitePackage}, File{"web/yarn.lock", "\n"}, File{"api/requirements.txt", "flask==3.0.3\n"},
    File{"api/app.py", "app = None\n"}};
constexpr std::array rustFiles{
    File{"Cargo.toml", "[package]\nname = \"a\"\n\n[dependencies]\naxum = \"0.7\"\n"}, File{"Cargo.lock", "\n"},
    File{"src/main.rs", "fn main() {}\n"}};
constexpr std::array expressFiles{
    File{"package.json", expressPackage}, File{"pnpm-lock.yaml", "\n"}, File{"server.js", "\n"},
    File{"docker-compose.yml", "services: {}\n"}};
constexpr std::array djangoFiles{
    File{"pyproject.toml", "[project]\nname = \"a\"\ndependencies = [\"django\"]\n"}, File{"manage.py", "\n"},
    File{"uv.lock", "\n"}};
constexpr std::array staticFiles{File{"index.html", "<!doctype html>\n"}, File{"style.css", "\n"}};

constexpr std::array<std::span<const File>, 8> kinds{nextFiles, fastApiFiles, goFiles,     fullStackFiles,
                                                     rustFiles, expressFiles, djangoFiles, staticFiles};

class Maker {
public:
    explicit Maker(const std::string& root) : m_root(root) { folder({}); }

    [[nodiscard]] int folders() const { return m_folders; }
    [[nodiscard]] bool failed() const { return m_failed; }

    /// The folders above must exist; one that exists already is left alone.
    void folder(const std::string& path) {
        if (mkdir(full(path).c_str(), 0755) == 0) {
            ++m_folders;
        } else if (errno != EEXIST) {
            fail(path);
        }
    }

    void file(const std::string& path, std::string_view text) {
        const int fd = open(full(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            fail(path);
        }
        if (fd >= 0) {
            close(fd);
        }
    }

private:
    [[nodiscard]] std::string full(const std::string& path) const {
        return path.empty() ? m_root : m_root + "/" + path;
    }
    void fail(const std::string& path) {
        std::fprintf(stderr, "%s: %s\n", full(path).c_str(), std::strerror(errno));
        m_failed = true;
    }

    std::string m_root;
    int m_folders = -1; // the root does not count
    bool m_failed = false;
};

std::string numbered(const std::string& name, int number) {
    return name + "-" + std::to_string(number);
}

void makeSources(Maker& maker, const std::string& project) {
    for (const char* name : {"src", "assets", "tests", "docs"}) {
        const std::string top = project + "/" + name;
        maker.folder(top);
        for (int part = 0; part < 3; ++part) {
            const std::string middle = top + "/" + numbered("part", part);
            maker.folder(middle);
            maker.folder(middle + "/inner");
            for (int file = 0; file < 6; ++file) {
                maker.file(middle + "/" + numbered("file", file) + ".txt", "text\n");
            }
        }
    }
}

void makeSkipped(Maker& maker, const std::string& project, int count) {
    const std::string objects = project + "/.git/objects";
    maker.folder(project + "/.git");
    maker.folder(objects);
    maker.folder(project + "/node_modules");
    // Two for .git and its objects, one for node_modules.
    for (int made = 3, number = 0; made < count; ++number) {
        if (number % 8 == 0) {
            maker.folder(objects + "/" + numbered("o", number));
            ++made;
            continue;
        }
        const std::string package = project + "/node_modules/" + numbered("package", number);
        maker.folder(package);
        ++made;
        if (made < count) {
            maker.folder(package + "/lib");
            ++made;
        }
    }
}

void makeProject(Maker& maker, int number, const TreeShape& shape) {
    constexpr int projectsPerTeam = 25;
    const std::string team = numbered("team", number / projectsPerTeam);
    const std::string project = team + "/" + numbered("project", number);
    maker.folder(team);
    maker.folder(project);
    makeSources(maker, project);
    makeSkipped(maker, project, shape.skippedPerProject);
    maker.file(project + "/README.md", "# Project\n");
    maker.file(project + "/.gitignore", "node_modules\n");
    for (const File& file : kinds[static_cast<size_t>(number) % kinds.size()]) {
        const std::string path(file.path);
        if (const size_t slash = path.find('/'); slash != std::string::npos) {
            maker.folder(project + "/" + path.substr(0, slash));
        }
        maker.file(project + "/" + path, file.text);
    }
}

/// Ten folders in each folder down to the fourth level, in each tenth of those one more.
void makePlain(Maker& maker, const std::string& path, int level, int limit) {
    if (maker.folders() >= limit || maker.failed()) {
        return;
    }
    maker.folder(path);
    for (const char* name : {"notes.txt", "photo.jpg", "letter.odt"}) {
        maker.file(path + "/" + name, "text\n");
    }
    const bool last = level >= 4;
    const int below = !last ? 10 : (level == 4 && path.back() == '0' ? 1 : 0);
    for (int number = 0; number < below; ++number) {
        makePlain(maker, path + "/" + numbered("folder", number), level + 1, limit);
    }
}

} // namespace

bool makeTree(const std::string& root, const TreeShape& shape) {
    Maker maker(root);
    for (int number = 0; number < shape.projects && !maker.failed(); ++number) {
        makeProject(maker, number, shape);
    }
    for (int number = 0; maker.folders() < shape.folders && !maker.failed(); ++number) {
        makePlain(maker, numbered("archive", number), 1, shape.folders);
    }
    if (!maker.failed() && maker.folders() != shape.folders) {
        std::fprintf(stderr, "the projects alone are %d folders, more than %d\n", maker.folders(), shape.folders);
        return false;
    }
    return !maker.failed();
}

} // namespace orv::bench
