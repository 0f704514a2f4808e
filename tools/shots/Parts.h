#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

class QWidget;

/// What a picture shows of one part of a window: told apart so that pictures can be compared where
/// fonts, and with them every pixel of a text, differ a little from machine to machine.
struct PicturePart {
    /// Class, name and number of the part, which are its own in its picture.
    QString name;
    /// From the upper left corner of the picture.
    QRect place;
    /// The ground of a control, which is its most frequent colour, or the means of the cells of a
    /// view, row by row.
    QList<QRgb> colors;
};

namespace PictureParts {

/// The columns and rows of cells of a view.
constexpr int kColumns = 12;
constexpr int kRows = 6;

/// Every control and every view that is seen, in the order of the window's children.
QList<PicturePart> of(const QWidget& shown, const QImage& picture);

/// One part as a line of text, and back. A line that is no part has no name.
QString lineOf(const PicturePart& part);
PicturePart partOf(const QString& line);

/// How a part differs from what it should be; empty where it does not. Letters of another version
/// of a font are a few pixels wider, and shift the mean of a cell a little.
QString difference(const PicturePart& is, const PicturePart& shouldBe);

} // namespace PictureParts
