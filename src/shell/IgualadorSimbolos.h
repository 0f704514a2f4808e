#pragma once

#include <QObject>

class QWidget;

namespace ovelin {

/// Gives every square tool button below a widget, at any depth, the font size at which its face
/// fills the same box as all the others: by the ink of the face in the font in force, which
/// differs from machine to machine. These buttons are named "btn_toolbar" or "btn_sigla". A button
/// with an icon, without text, or with a face that the font does not have keeps its size.
///
/// The size goes into the button's own style sheet, whose other rules stay, and only where it
/// changes. Each decision is written to the standard error stream if the environment variable
/// OVELIN_SIMBOLOS is set.
void igualarSimbolos(QWidget* root);

/// Evens out the faces of every window at each showing, once it is installed as an event filter
/// on the application object. Keeps no event from going on.
class IgualadorSimbolos : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace ovelin
