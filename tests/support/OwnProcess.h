#pragma once

#include "support/ChildProcess.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTest>

#include <cstdio>
#include <functional>
#include <map>

/// A test program that runs itself again, for what a process can bear only once.
namespace OwnProcess {

/// What a process of this program may be asked to do, by name. Each returns an exit code.
using Tasks = std::map<QString, std::function<int()>>;

constexpr auto kArgument = "--task";

/// Starts a process of this program on a task, in the present environment but for `variables`; an
/// empty value takes a variable away.
inline void start(QProcess& process, const QString& task,
                  const QMap<QString, QString>& variables = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable) {
        if (variable.value().isEmpty())
            environment.remove(variable.key());
        else
            environment.insert(variable.key(), variable.value());
    }
    process.setProcessEnvironment(environment);
    endWithTest(process);
    process.start(QCoreApplication::applicationFilePath(), {kArgument, task});
}

/// What a process of this program says of a task, line by line. Empty if it hangs, crashes or
/// fails.
inline QStringList linesOf(const QString& task, const QMap<QString, QString>& variables = {})
{
    QProcess program;
    start(program, task, variables);
    if (!program.waitForFinished(120000) || program.exitStatus() != QProcess::NormalExit ||
        program.exitCode() != 0)
        return {};
    return QString::fromUtf8(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

/// Says a line to whoever started this process.
inline void say(const QString& line)
{
    std::puts(qPrintable(line));
    std::fflush(stdout);
}

/// The main() of such a program: a task where one is asked for, and else the test.
template <typename Test>
int main(int argc, char** argv, const Tasks& tasks)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments[1] == kArgument) {
        QStandardPaths::setTestModeEnabled(true);
        return tasks.at(arguments[2])();
    }
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace OwnProcess
