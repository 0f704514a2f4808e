#pragma once

#include <QTest>

#if defined(QT_WIDGETS_LIB)
#include <QApplication>
#elif defined(QT_GUI_LIB)
#include <QGuiApplication>
#endif

/// A program of several tests, of which each process runs the one that its first argument names.
///
/// Sources of tests that share a program are compiled several at once: everything in one, but what
/// it includes, stands in a namespace of its own, and that ends with one of the macros below.
namespace TestProgram {

/// Runs a test with the arguments that are left for it, and returns what the process returns.
using Run = int (*)(int argc, char** argv);

/// Has a test known by its name, before main().
class Entry {
public:
    Entry(const char* test, Run run);
};

template <typename Application, typename Test>
int run(int argc, char** argv)
{
    Application application(argc, argv);
    application.setAttribute(Qt::AA_Use96Dpi, true);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#if defined(QT_WIDGETS_LIB)
using Windows = QApplication;
#elif defined(QT_GUI_LIB)
using Windows = QGuiApplication;
#else
using Windows = QCoreApplication;
#endif

} // namespace TestProgram

/// A test that may have windows, if its program links what they take.
#define VELTA_TEST(Test)                                                                           \
    const TestProgram::Entry entry{#Test, &TestProgram::run<TestProgram::Windows, Test>};

/// A test without a connection to any screen.
#define VELTA_GUILESS_TEST(Test)                                                                   \
    const TestProgram::Entry entry{#Test, &TestProgram::run<QCoreApplication, Test>};
