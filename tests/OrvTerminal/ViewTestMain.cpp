#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string_view>

int main(int argc, char** argv) {
    const QTemporaryDir support;
    qputenv("ORV_SUPPORT_DIR", support.path().toUtf8());
    // Three screens beside each other, named as their scale. The first name is the primary screen's.
    QFile screens(support.filePath(QStringLiteral("screens.json")));
    if (!screens.open(QFile::WriteOnly)) {
        return 1;
    }
    screens.write(R"({"screens": [
        {"name": "1", "x": 0, "y": 0, "width": 1600, "height": 1200, "logicalDpi": 96, "logicalBaseDpi": 96},
        {"name": "1.25", "x": 1600, "y": 0, "width": 1600, "height": 1200, "logicalDpi": 120, "logicalBaseDpi": 96},
        {"name": "2", "x": 3200, "y": 0, "width": 1600, "height": 1200, "logicalDpi": 192, "logicalBaseDpi": 96}]})");
    screens.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toUtf8());
    qputenv("QT_QUICK_BACKEND", "software");
    ::testing::InitGoogleTest(&argc, argv);
    // With --update the pictures that are compared are made anew, to be looked at.
    if (argc > 1 && std::string_view(argv[1]) == "--update") {
        qputenv("ORV_UPDATE_PICTURES", "1");
        GTEST_FLAG_SET(filter, "*Pictures.*");
    }
    const QGuiApplication application(argc, argv);
    const QDir fonts(QStringLiteral(ORV_FONTS));
    for (const QString& file : fonts.entryList({QStringLiteral("JetBrainsMono-*.ttf")})) {
        QFontDatabase::addApplicationFont(fonts.filePath(file));
    }
    return RUN_ALL_TESTS();
}
