#include "shell/controls/PlainText.h"

#include <QLabel>
#include <QTextDocument>

using namespace Qt::Literals::StringLiterals;

QLabel* plainLabel(const QString& text)
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    return label;
}

QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QString plainTitle(QString text)
{
    return text.replace("[*]"_L1, "[*][*]"_L1);
}
