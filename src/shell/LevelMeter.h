#pragma once

#include <QTimer>
#include <QWidget>

/// How loud something is at the moment: a bar that jumps up with the sound and falls back slowly.
/// It turns yellow near full scale, and red where the sound is cut.
class LevelMeter : public QWidget {
    Q_OBJECT

public:
    explicit LevelMeter(QWidget* parent = nullptr);

    /// Takes the greatest magnitude of the sound that has come since the last call, 0 to 1.
    void take(float peak);

    /// Falls to silence at once.
    void clear();

    /// In decibels below full scale: 0 at the most, kLeast for silence and less.
    double decibels() const;

    static constexpr double kLeast = -48.0;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void fall();

    /// Linear, as it is shown.
    float level_ = 0.0F;
    QTimer falling_;
};
