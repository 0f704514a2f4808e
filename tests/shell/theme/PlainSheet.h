#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

/// One block of a style sheet, as it stands there.
struct SheetRule {
    struct Declaration {
        QString property;
        QString value;
    };

    QStringList selectors;
    QList<Declaration> declarations;
};

/// The rules of a style sheet in their order. Knows comments, selectors and declarations, and
/// nothing of what they mean.
inline QList<SheetRule> rulesOf(QString sheet)
{
    static const QRegularExpression comment(R"(/\*.*?\*/)",
                                            QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression block(R"(([^{}]+)\{([^{}]*)\})");
    static const QRegularExpression declaration(R"(([\w-]+)\s*:\s*("[^"]*"|[^;"]+);)");
    sheet.remove(comment);
    QList<SheetRule> rules;
    for (const QRegularExpressionMatch& match : block.globalMatch(sheet)) {
        SheetRule rule;
        for (const QString& selector : match.captured(1).split(','))
            rule.selectors.append(selector.simplified());
        for (const QRegularExpressionMatch& inner : declaration.globalMatch(match.captured(2)))
            rule.declarations.append({inner.captured(1), inner.captured(2).simplified()});
        rules.append(rule);
    }
    return rules;
}

/// What a sheet says of one property under exactly one selector; its last word counts. Empty if
/// it says nothing.
inline QString valueIn(const QList<SheetRule>& rules, const QString& selector,
                       const QString& property)
{
    QString value;
    for (const SheetRule& rule : rules) {
        if (!rule.selectors.contains(selector))
            continue;
        for (const SheetRule::Declaration& declaration : rule.declarations) {
            if (declaration.property == property)
                value = declaration.value;
        }
    }
    return value;
}
