#pragma once

#include <QList>
#include <QObject>

class QWidget;

/// Keys belong to the editors: a letter is a note or a chord there, and a box that was looked at
/// must not take the next one for a choice of its own. This knows which editor had the keys last
/// and gives them back to it.
class EditorFocus : public QObject {
    Q_OBJECT

public:
    /// The first of the editors counts as the last one until another has had the keys.
    EditorFocus(const QList<QWidget*>& editors, QObject* parent);

    /// From now on the keys go back when a list of one of the panel's combo boxes closes, and when
    /// a number typed into one of its spin boxes is confirmed.
    void returnFrom(const QWidget* panel);

    /// The editor that had the keys last.
    QWidget* last() const { return last_; }

    /// Gives the keys to the editor that had them last.
    void giveBack() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QList<QWidget*> editors_;
    QWidget* last_;
};
