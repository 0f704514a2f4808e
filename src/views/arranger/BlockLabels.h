#pragma once

#include <QCache>
#include <QFont>
#include <QStaticText>
#include <QString>

/// The labels of blocks, shaped to be painted. They outlive the items: a drag makes all items anew
/// at each step, and what a label costs is its shaping.
class BlockLabels {
public:
    /// The words of a block in a room of so many pixels of the screen: the full ones where they
    /// fit, else the others, cut at their end where even those do not.
    QStaticText of(const QString& label, const QString& fullLabel, qreal width, const QFont& font);

private:
    struct Words {
        QString label;
        QString fullLabel;
        qreal width;

        friend bool operator==(const Words&, const Words&) = default;

        friend size_t qHash(const Words& words, size_t seed)
        {
            return qHashMulti(seed, words.label, words.fullLabel, words.width);
        }
    };

    /// Of what is kept.
    QFont font_;
    /// More than a large screen shows at once.
    QCache<Words, QStaticText> kept_{1024};
};
