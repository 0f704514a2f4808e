#include "app/StartOptions.h"

#include "storage/WorkArchive.h"

#include <QDir>

#include <algorithm>

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

/// The arguments behind the program's name that are neither options with a value nor such values.
QStringList freeStanding(const QStringList& arguments)
{
    QStringList words;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (takesValue(arguments[i]))
            ++i;
        else
            words.append(arguments[i]);
    }
    return words;
}

StartOptions::About aboutOf(const QStringList& words)
{
    for (const QString& word : words) {
        if (word == "--help"_L1)
            return StartOptions::About::Help;
        if (word == "--version"_L1)
            return StartOptions::About::Version;
    }
    return StartOptions::About::Nothing;
}

std::optional<QString> workFileOf(const QStringList& words)
{
    const auto file = std::ranges::find_if(words, [](const QString& word) {
        return word.endsWith(QLatin1StringView(WorkArchive::kSuffix), Qt::CaseInsensitive);
    });
    return file == words.end() ? std::nullopt : std::optional(*file);
}

} // namespace

StartOptions StartOptions::read(const QStringList& arguments)
{
    StartOptions options;
    const QStringList words = freeStanding(arguments);
    options.about = aboutOf(words);
    options.workFile = workFileOf(words);
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
