#pragma once

#include "shell/Prompts.h"

#include <QDialog>
#include <QStringList>
#include <QTest>

#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <variant>

/// Prompts that show nothing. Questions get the answers that a test has laid ready, in their order,
/// and everything that is said or asked is written down. A question without an answer of its kind
/// fails the test and is taken for given up.
class ScriptedPrompts : public Prompts {
public:
    // ---- Answers, laid ready ----

    void answer(QMessageBox::StandardButton button) { answers_.emplace_back(button); }

    void answerText(const QString& text) { answers_.emplace_back(Text{text}); }

    void giveUpText() { answers_.emplace_back(Text{}); }

    void answerOffer(bool taken) { answers_.emplace_back(Offer{taken}); }

    void answerPath(const QString& path) { answers_.emplace_back(Path{path}); }

    void giveUpPath() { answers_.emplace_back(Path{}); }

    /// Uses the next dialog, which is on the screen meanwhile, as the user would.
    void inDialog(std::function<void(QDialog&)> use) { answers_.emplace_back(std::move(use)); }

    /// Runs while a warning is on the screen.
    std::function<void()> whileWarning;

    // ---- What happened ----

    /// One line for every call: its kind, its texts, and what it offers.
    const QStringList& calls() const { return calls_; }

    QStringList takeCalls() { return std::exchange(calls_, {}); }

    bool allAnswersUsed() const { return answers_.empty(); }

    // ---- In the place of the dialogs ----

    void warn(QWidget*, const QString& title, const QString& text) override
    {
        note({"warn", title, text});
        if (whileWarning)
            whileWarning();
    }

    void inform(QWidget*, const QString& title, const QString& text) override
    {
        note({"inform", title, text});
    }

    QMessageBox::StandardButton ask(QWidget*, const QString& title, const QString& text,
                                    QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton byDefault) override
    {
        QStringList words{"ask", title, text, namesOf(buttons)};
        if (byDefault != QMessageBox::NoButton)
            words.append("default " + namesOf(byDefault));
        note(words);
        return take<QMessageBox::StandardButton>().value_or(QMessageBox::Cancel);
    }

    bool suggest(QWidget*, const QString& title, const QString& text,
                 const QString& action) override
    {
        note({"suggest", title, text, action});
        return take<Offer>().value_or(Offer{}).taken;
    }

    bool offer(QWidget*, const QString& title, const QString& text, const QString& wayOut) override
    {
        note({"offer", title, text, wayOut});
        return take<Offer>().value_or(Offer{}).taken;
    }

    std::optional<QString> askText(QWidget*, const QString& title, const QString& label,
                                   const QString& text) override
    {
        note({"askText", title, label, text});
        return take<Text>().value_or(Text{}).text;
    }

    std::optional<QString> askOpenFile(QWidget*, const QString& title,
                                       const QString& filter) override
    {
        note({"askOpenFile", title, filter});
        return take<Path>().value_or(Path{}).path;
    }

    std::optional<QString> askSaveFile(QWidget*, const QString& title, const QString& proposal,
                                       const QString& filter) override
    {
        note({"askSaveFile", title, proposal, filter});
        return take<Path>().value_or(Path{}).path;
    }

    bool run(QDialog& dialog) override
    {
        note({"run", dialog.windowTitle()});
        const auto use = take<std::function<void(QDialog&)>>();
        if (!use)
            return false;
        dialog.show();
        (*use)(dialog);
        return dialog.result() == QDialog::Accepted;
    }

private:
    struct Text {
        std::optional<QString> text;
    };

    struct Offer {
        bool taken = false;
    };

    struct Path {
        std::optional<QString> path;
    };

    using Answer =
        std::variant<QMessageBox::StandardButton, Text, Offer, Path, std::function<void(QDialog&)>>;

    void note(const QStringList& words) { calls_.append(words.join(" | ")); }

    static QString namesOf(QMessageBox::StandardButtons buttons)
    {
        static const QList<std::pair<QMessageBox::StandardButton, QString>> kNames{
            {QMessageBox::Ok, "Ok"},           {QMessageBox::Save, "Save"},
            {QMessageBox::Discard, "Discard"}, {QMessageBox::Cancel, "Cancel"},
            {QMessageBox::Yes, "Yes"},         {QMessageBox::No, "No"}};
        QStringList names;
        for (const auto& [button, name] : kNames) {
            if (buttons.testFlag(button))
                names.append(name);
            buttons.setFlag(button, false);
        }
        return names.join(' ') + (buttons ? " and others" : "");
    }

    template <typename Kind>
    std::optional<Kind> take()
    {
        if (answers_.empty() || !std::holds_alternative<Kind>(answers_.front())) {
            QTest::qFail(qPrintable("No answer laid ready for: " + calls_.last()), __FILE__,
                         __LINE__);
            return std::nullopt;
        }
        std::optional<Kind> answer(std::get<Kind>(std::move(answers_.front())));
        answers_.pop_front();
        return answer;
    }

    std::deque<Answer> answers_;
    QStringList calls_;
};
