#pragma once

#include <QTranslator>

/// What Qt's own dialogs and buttons say: its Spanish, where that is installed, in the words of the
/// rest of the screen, which speaks to its users as "vos" and of files, folders and keys as they
/// do.
class QtTexts : public QTranslator {
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    /// Loads what comes with Qt. Without it there are the texts of file dialogs alone.
    void loadSpanish();

    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override;
};
