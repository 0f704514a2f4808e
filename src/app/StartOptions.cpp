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

} // namespace

StartOptions StartOptions::read(const QStringList& arguments)
{
    StartOptions options;
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
