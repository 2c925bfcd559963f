// An empty Qt Quick window: what the start of the application is measured beside.

#include <QGuiApplication>
#include <QQuickWindow>

#include <cstdio>

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QQuickWindow window;
    window.resize(1280, 832);
    if (qEnvironmentVariableIsSet("ORV_BENCH_FIRST_FRAME")) {
        QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [] {
            std::puts("frame");
            std::fflush(stdout);
            std::_Exit(0);
        });
    }
    window.show();
    return QGuiApplication::exec();
}
