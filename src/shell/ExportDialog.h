#pragma once

#include <QElapsedTimer>
#include <QProgressDialog>

/// Shows how far an export has come, and lets the user call it off. While it is shown, nothing else
/// in the program can be used.
class ExportDialog : public QProgressDialog {
    Q_OBJECT

public:
    ExportDialog(const QString& title, QWidget* parent);

    /// Takes how much is done, from 0 to 1. An export of less than 0.4 seconds is over before
    /// anything is shown. False when the user has called it off.
    bool advance(double done);

private:
    QElapsedTimer sinceStart_;
};
