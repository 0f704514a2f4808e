#pragma once

#include "storage/RecoveryCopy.h"

#include <QFrame>

class QLabel;

/// Offers, one after the other, the works that programs have left unsaved when they ended without
/// leave. Hidden while there is none.
class RecoveryBar : public QFrame {
    Q_OBJECT

public:
    explicit RecoveryBar(QWidget* parent = nullptr);

    /// Offers copies behind those that are offered already.
    void add(std::vector<AbandonedCopy> copies);

    /// Offers the copy of the work with this id before any other. False if there is none.
    bool bringForward(const QString& id);

    /// The copy that is offered, or null. It lives until dropOffered().
    const AbandonedCopy* offered() const;

    /// Removes the copy that is offered, and offers the next.
    void dropOffered();

signals:
    /// The user wants the work that is offered.
    void recoverRequested();

private:
    void showOffered();

    std::vector<AbandonedCopy> copies_;
    QLabel* sentence_;
};
