#include "records/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr std::size_t kIndent = 4;

/// The value as Qt writes it, where only Qt knows how.
QByteArray asQtWrites(const QJsonValue& value)
{
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).sliced(1).chopped(1);
}

/// Whether the shortest decimals of a number need no exponent in anybody's notation.
bool isPlain(double number)
{
    const double size = std::abs(number);
    return size >= 1e-3 && size < 1e6;
}

} // namespace

void JsonText::key(QLatin1StringView name)
{
    beginLine();
    text_.append(1, '"').append(name.data(), static_cast<std::size_t>(name.size())).append("\": ");
    keyIsWritten_ = true;
}

void JsonText::value(int number)
{
    beginValue();
    std::array<char, 16> digits;
    text_.append(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
}

void JsonText::value(double number)
{
    beginValue();
    std::array<char, 32> digits;
    if (isPlain(number))
        text_.append(
            digits.data(),
            std::to_chars(digits.begin(), digits.end(), number, std::chars_format::fixed).ptr);
    else
        text_.append(asQtWrites(number).toStdString());
}

void JsonText::value(bool truth)
{
    beginValue();
    text_.append(truth ? "true" : "false");
}

void JsonText::value(const QString& text)
{
    beginValue();
    text_.append(asQtWrites(text).toStdString());
}

void JsonText::begin(char bracket)
{
    beginValue();
    text_.append(1, bracket);
    depth_ += 1;
    holdsSomething_ = false;
}

void JsonText::end(char bracket)
{
    depth_ -= 1;
    text_.append(1, '\n').append(depth_ * kIndent, ' ').append(1, bracket);
    holdsSomething_ = true;
}

void JsonText::beginValue()
{
    if (!keyIsWritten_ && depth_ > 0)
        beginLine();
    keyIsWritten_ = false;
}

void JsonText::beginLine()
{
    text_.append(holdsSomething_ ? ",\n" : "\n").append(depth_ * kIndent, ' ');
    holdsSomething_ = true;
}
