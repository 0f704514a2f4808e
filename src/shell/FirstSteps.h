#pragma once

#include <QLabel>

class QAbstractScrollArea;

/// The first steps of a song, told in the empty space of a view: a sheet over the lower middle of
/// what is seen, which takes no clicks and is none of what the view draws. A view that has no room
/// for it goes without.
class FirstSteps : public QLabel {
    Q_OBJECT

public:
    /// Becomes a child of `view` and follows its size. Hidden until it is told.
    FirstSteps(const QStringList& steps, QAbstractScrollArea* view);

    void setTold(bool told);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit();

    QAbstractScrollArea* view_;
    bool told_ = false;
};
