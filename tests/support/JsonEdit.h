#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QStringList>

#include <limits>

/// Changes of JSON documents for tests of their readers. A path names keys and array indices
/// from the root, such as {"tracks", "0", "name"}.
namespace JsonEdit {

/// The value at a path; undefined where there is none.
inline QJsonValue valueAt(const QJsonValue& root, const QStringList& path)
{
    QJsonValue value = root;
    for (const QString& step : path)
        value = value.isArray() ? value.toArray().at(step.toInt()) : value.toObject().value(step);
    return value;
}

/// The document with another value at a path; an undefined one removes the key.
inline QJsonValue withValue(const QJsonValue& root, const QStringList& path,
                            const QJsonValue& value)
{
    if (path.isEmpty())
        return value;
    const QJsonValue changed = withValue(valueAt(root, path.first(1)), path.mid(1), value);
    if (root.isArray()) {
        QJsonArray array = root.toArray();
        array[path.first().toInt()] = changed;
        return array;
    }
    QJsonObject object = root.toObject();
    object[path.first()] = changed;
    return object;
}

/// The object in a text, empty if the text is none.
inline QJsonObject parsed(const QByteArray& text)
{
    return QJsonDocument::fromJson(text).object();
}

/// A value that no reader can want: mostly of the wrong type or out of any range.
inline QJsonValue absurdValue(QRandomGenerator& random)
{
    static const QList<QJsonValue> kAbsurd{QJsonValue(),
                                           true,
                                           false,
                                           0,
                                           1,
                                           -1,
                                           0.5,
                                           -0.0,
                                           1e300,
                                           -1e300,
                                           5e-324,
                                           std::numeric_limits<qint32>::max(),
                                           std::numeric_limits<qint32>::min(),
                                           std::numeric_limits<qint64>::max(),
                                           std::numeric_limits<qint64>::min(),
                                           2147483648.0,
                                           1e9,
                                           QStringLiteral(""),
                                           QStringLiteral("Major"),
                                           QStringLiteral("100"),
                                           QString(5000, QChar(0x00F1)),
                                           QString(QChar(0xD800)),
                                           QJsonArray(),
                                           QJsonArray{7, QJsonArray{7}, QJsonObject()},
                                           QJsonObject(),
                                           QJsonObject{{QStringLiteral("name"), QJsonArray()}}};
    return kAbsurd[random.bounded(kAbsurd.size())];
}

/// The document with about one in `rarity` of its values replaced by absurd ones, lost or, in
/// arrays, doubled.
inline QJsonValue mutated(const QJsonValue& value, QRandomGenerator& random, int rarity)
{
    if (random.bounded(rarity) == 0)
        return absurdValue(random);
    if (value.isArray()) {
        QJsonArray result;
        for (const QJsonValue& element : value.toArray()) {
            for (int copies = random.bounded(rarity) == 0 ? random.bounded(3) : 1; copies > 0;
                 --copies)
                result.append(mutated(element, random, rarity));
        }
        return result;
    }
    if (value.isObject()) {
        QJsonObject result;
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            if (random.bounded(rarity) != 0)
                result.insert(it.key(), mutated(it.value(), random, rarity));
        }
        return result;
    }
    return value;
}

/// The text with up to `changes` random changes: bytes replaced, lost or put in, and pieces
/// doubled.
inline QByteArray mutated(QByteArray text, QRandomGenerator& random, int changes)
{
    static constexpr char kTelling[] = "{}[],:\"\\-+.eE0123456789truefalsn \n\0\xC3\xED\xFF";
    static constexpr int kTellingCount = sizeof kTelling - 1;
    for (int left = random.bounded(changes) + 1; left > 0 && !text.isEmpty(); --left) {
        const qsizetype at = random.bounded(text.size());
        const char byte = kTelling[random.bounded(kTellingCount)];
        switch (random.bounded(5)) {
        case 0:
            text[at] = byte;
            break;
        case 1:
            text.insert(at, byte);
            break;
        case 2:
            text.remove(at, 1 + random.bounded(8));
            break;
        case 3:
            text.insert(random.bounded(text.size()), text.mid(at, random.bounded(64)));
            break;
        default:
            text[at] = static_cast<char>(text[at] ^ (1 << random.bounded(8)));
        }
    }
    return text;
}

} // namespace JsonEdit
