#pragma once

#include <QTranslator>

/// Gives every text back with the context that it was asked in, as "Context: text".
class ContextTranslator : public QTranslator {
public:
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QString::fromUtf8(context) + ": " + QString::fromUtf8(text);
    }

    bool isEmpty() const override { return false; }
};
