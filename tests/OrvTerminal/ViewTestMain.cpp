#include <QDir>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string_view>

int main(int argc, char** argv) {
    const QTemporaryDir support;
    qputenv("ORV_SUPPORT_DIR", support.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
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
