#include <gtest/gtest.h>

// Window tests get a QApplication on the offscreen platform (unless one is
// set); core tests get a QCoreApplication for their event loops and threads.
#ifdef QUILLON_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

int main(int argc, char** argv)
{
#ifdef QUILLON_TEST_WIDGETS
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    TestApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
