#pragma once

#include <QStatusBar>

class QLabel;
class QPushButton;

/// The status bar: a hint of the keys, which gives way to messages and to a voice that is being
/// sung, and on the right what lasts, with the switch between the two looks.
class StatusLine : public QStatusBar {
    Q_OBJECT

public:
    /// With a mark that the bank is missing, which lies at this path; none for an empty one.
    StatusLine(const QString& missingBank, QWidget* parent);

    /// What a singer is told, for as long as it is so.
    enum class Singing { No, SoonByTheCount, Yes };
    void showSinging(Singing singing);

signals:
    /// The user wants to know what to do without the bank. `sentence` says that it is missing.
    void missingBankAsked(const QString& sentence);

private:
    void addMissingBankMark(const QString& path);
    void addThemeButton();
    void showTheme(bool dark);
    void updateHint();

    QLabel* hint_;
    /// In the place of the hint.
    QLabel* takeNotice_;
    QPushButton* themeButton_;
    bool sings_ = false;
};
