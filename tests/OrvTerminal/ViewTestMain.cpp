#include <QDir>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const QTemporaryDir support;
    qputenv("ORV_SUPPORT_DIR", support.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    ::testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    const QDir fonts(QStringLiteral(ORV_FONTS));
    for (const QString& file : fonts.entryList({QStringLiteral("JetBrainsMono-*.ttf")})) {
        QFontDatabase::addApplicationFont(fonts.filePath(file));
    }
    return RUN_ALL_TESTS();
}
