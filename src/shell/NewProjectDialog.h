#pragma once

#include "music/KeySignature.h"
#include "music/TimeSignature.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QSpinBox;

/// Asks for what a new work starts with.
class NewProjectDialog : public QDialog {
    Q_OBJECT

public:
    explicit NewProjectDialog(QWidget* parent = nullptr);

    /// Trimmed; may be empty.
    QString name() const;

    TimeSignature timeSignature() const;

    /// Major or Minor.
    KeySignature key() const;

    /// 40 to 240.
    int bpm() const;

private:
    QLineEdit* name_;
    QComboBox* meter_;
    QComboBox* root_;
    QComboBox* mode_;
    QSpinBox* bpm_;
};
