#include "app/StartOptions.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace {

/// The argument behind one that is present at `index`, if there is one.
std::optional<QString> valueBehind(const QStringList& arguments, qsizetype index)
{
    if (index + 1 >= arguments.size())
        return std::nullopt;
    return arguments[index + 1];
}

bool takesValue(const QString& argument)
{
    return argument == "--selftest"_L1 || argument == "--open"_L1 || argument == "--proyecto"_L1;
}

StartOptions::About aboutOf(const QStringList& arguments)
{
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == "--help"_L1)
            return StartOptions::About::Help;
        if (arguments[i] == "--version"_L1)
            return StartOptions::About::Version;
        if (takesValue(arguments[i]))
            ++i;
    }
    return StartOptions::About::Nothing;
}

} // namespace

StartOptions StartOptions::read(const QStringList& arguments)
{
    StartOptions options;
    options.about = aboutOf(arguments);
    if (const qsizetype selfTest = arguments.indexOf("--selftest"_L1); selfTest >= 0)
        options.selfTestDir =
            valueBehind(arguments, selfTest).value_or(QDir::tempPath() + "/velta_selftest"_L1);

    // The long name is looked at only where the short one does not appear at all.
    qsizetype open = arguments.indexOf("--open"_L1);
    if (open < 0)
        open = arguments.indexOf("--proyecto"_L1);
    if (open >= 0)
        options.projectId = valueBehind(arguments, open);
    return options;
}
