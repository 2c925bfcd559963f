#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const QTemporaryDir support;
    qputenv("ORV_SUPPORT_DIR", support.path().toUtf8());
    // Machines on which it happens to be set would hide that a service needs it.
    qunsetenv("PYTHONUNBUFFERED");
    ::testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
