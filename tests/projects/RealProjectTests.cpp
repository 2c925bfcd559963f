#include "OrvCore/UniqueFd.h"
#include "tests/OrvLauncher/Launcher.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

#include <netinet/in.h>
#include <sys/socket.h>

namespace orv::test {

using namespace Qt::StringLiterals;

namespace {

struct RealProject {
    const char* label;
    QString kind;
    QString framework;
    QString needs; ///< a line for the shell that fails where it can't be tried
    QList<std::pair<QString, QByteArray>> files = {};
    QString prepare = u":"_s; ///< a line for the shell, run in the folder
    QByteArray answer;        ///< what is in the page at "/"
    bool installs = false;
    int takenPort = 0; ///< someone else listens there already
};

void PrintTo(const RealProject& project, std::ostream* out) {
    *out << project.label;
}

const QString venv = u"/usr/bin/python3 -m venv --system-site-packages .venv"_s;

const RealProject realProjects[] = {
    {.label = "Vite",
     .kind = u"frontend"_s,
     .framework = u"Vite"_s,
     .needs = u"npm ping --fetch-timeout=10000 --fetch-retries=0"_s,
     .files =
         {{u"package.json"_s, R"({"private":true,"type":"module","scripts":{"dev":"vite"},
                                     "devDependencies":{"vite":"^5.4.0"}})"},
          {u"index.html"_s, "<!doctype html><title>Real</title><script type=module src=/main.js></script>"},
          {u"main.js"_s, "document.title = 'Real page'\n"}},
     .answer = "/@vite/client",
     .installs = true,
     .takenPort = 5173},
    {.label = "Express",
     .kind = u"backend"_s,
     .framework = u"Express"_s,
     .needs = u"npm ping --fetch-timeout=10000 --fetch-retries=0"_s,
     .files =
         {{u"package.json"_s, R"({"scripts":{"start":"node server.js"},"dependencies":{"express":"^4.19.0"}})"},
          {u"server.js"_s, "const app = require('express')()\n"
                           "app.get('/', (request, response) => response.send('from express'))\n"
                           "const server = app.listen(0, () =>\n"
                           "  console.log(`Listening on http://localhost:${server.address().port}`))\n"}},
     .answer = "from express",
     .installs = true},
    {.label = "Django",
     .kind = u"backend"_s,
     .framework = u"Django"_s,
     .needs = u"/usr/bin/python3 -c 'import django, ensurepip'"_s,
     .prepare = venv + u" && .venv/bin/python -m django startproject real ."_s,
     .answer = "The install worked successfully"},
    {.label = "Flask",
     .kind = u"backend"_s,
     .framework = u"Flask"_s,
     .needs = u"/usr/bin/python3 -c 'import flask, ensurepip'"_s,
     .files =
         {{u"requirements.txt"_s, "flask\n"},
          {u"app.py"_s, "from flask import Flask\napp = Flask(__name__)\n\n"
                        "@app.get('/')\ndef home():\n    return 'from flask'\n"}},
     .prepare = venv,
     .answer = "from flask"},
    {.label = "Go",
     .kind = u"app"_s,
     .framework = u"Go"_s,
     .needs = u"go version"_s,
     .files =
         {{u"go.mod"_s, "module example.org/real\n\ngo 1.19\n"},
          {u"main.go"_s, "package main\n\nimport (\n\t\"fmt\"\n\t\"net\"\n\t\"net/http\"\n)\n\n"
                         "func main() {\n"
                         "\tlistener, err := net.Listen(\"tcp\", \"127.0.0.1:0\")\n"
                         "\tif err != nil {\n\t\tpanic(err)\n\t}\n"
                         "\tfmt.Printf(\"listening on http://%v\\n\", listener.Addr())\n"
                         "\thttp.Serve(listener, http.HandlerFunc(\n"
                         "\t\tfunc(w http.ResponseWriter, r *http.Request) { fmt.Fprint(w, \"from go\") }))\n}\n"}},
     .answer = "from go"},
    {.label = "Rust",
     .kind = u"app"_s,
     .framework = u"Rust"_s,
     .needs = u"cargo --version"_s,
     .files =
         {{u"Cargo.toml"_s, "[package]\nname = \"real\"\nversion = \"0.1.0\"\nedition = \"2021\"\n"},
          {u"src/main.rs"_s, "use std::io::{Read, Write};\nuse std::net::TcpListener;\n\n"
                             "fn main() {\n"
                             "    let listener = TcpListener::bind(\"127.0.0.1:0\").unwrap();\n"
                             "    println!(\"listening on http://{}\", listener.local_addr().unwrap());\n"
                             "    for stream in listener.incoming() {\n"
                             "        let mut stream = stream.unwrap();\n"
                             "        let _ = stream.read(&mut [0; 1024]);\n"
                             "        let _ = stream.write_all(b\"HTTP/1.0 200 OK\\r\\n\\r\\nfrom rust\");\n"
                             "    }\n}\n"}},
     .answer = "from rust"},
    {.label = "StaticSite",
     .kind = u"frontend"_s,
     .framework = u"Static site"_s,
     .needs = u"python3 --version"_s,
     .files = {{u"index.html"_s, "<!doctype html><title>A static site</title>"}},
     .answer = "A static site"},
};

/// Listens on a port of this machine, IPv4 and IPv6; invalid when it is taken already, which serves as well.
UniqueFd listenOn(int port) {
    UniqueFd socket(::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(static_cast<uint16_t>(port));
    const bool isBound = ::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    return isBound && ::listen(socket.get(), 1) == 0 ? std::move(socket) : UniqueFd();
}

class RealProjects : public ::testing::TestWithParam<RealProject> {
protected:
    Launcher launcher;
    QString folder = launcher.tree.path(u"projects/real"_s);

    /// What a line for the shell leads to in the project's folder.
    [[nodiscard]] Ended inFolder(const QString& line) const {
        return launcher.shell(u"cd "_s + folder + u" && { "_s + line + u"\n} 2>&1"_s);
    }
};

} // namespace

TEST_P(RealProjects, IsDetectedRunsIsReachedAndStops) {
    const RealProject& project = GetParam();
    for (const auto& [path, content] : project.files) {
        launcher.tree.add(u"projects/real/"_s + path, content);
    }
    launcher.tree.add(u"projects/real/"_s);
    if (const Ended needed = inFolder(u"/bin/zsh -c : && "_s + project.needs); needed.exitCode != 0) {
        GTEST_SKIP() << needed.out.toStdString();
    }
    const Ended prepared = inFolder(project.prepare);
    ASSERT_EQ(prepared.exitCode, 0) << prepared.out.toStdString();
    const QJsonObject detected =
        QJsonDocument::fromJson(launcher.call({u"detect"_s, folder, u"--json"_s}).out).object();
    const QJsonObject stack = detected[u"stacks"_s].toArray().first().toObject();
    ASSERT_EQ(stack[u"kind"_s].toString(), project.kind);
    EXPECT_EQ(stack[u"framework"_s].toString(), project.framework);

    const UniqueFd taken = project.takenPort != 0 ? listenOn(project.takenPort) : UniqueFd();
    QStringList words{u"run"_s, folder};
    if (project.installs) {
        EXPECT_EQ(launcher.call(words).exitCode, 1) << "it would have to be installed";
        words.append(u"--install"_s);
    }
    auto run = launcher.start(words);
    ASSERT_TRUE(run->waitFor(project.kind.toUtf8() + " is up at", std::chrono::minutes(5))) << run->end().out.data();
    const int port = run->addresses()[project.kind];
    EXPECT_NE(port, project.takenPort);
    EXPECT_TRUE(httpGet(port).contains(project.answer)) << port << httpGet(port).data();
    run->signal(SIGINT);
    const Ended ended = run->end();
    EXPECT_EQ(ended.exitCode, 0) << ended.err.data();
    EXPECT_EQ(launcher.leftBehind(), QStringList());
    EXPECT_EQ(httpGet(port), "");
}

INSTANTIATE_TEST_SUITE_P(FromTheTools, RealProjects, ::testing::ValuesIn(realProjects), [](const auto& project) {
    return std::string(project.param.label);
});

} // namespace orv::test
