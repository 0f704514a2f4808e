#pragma once

#include <QApplication>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QWidget>

#include <benchmark/benchmark.h>

/// What the benchmarks of the editors do alike.
namespace Editing {

/// Lets a scene and its views catch up, as they do between two edits, while nobody measures.
inline void settle(benchmark::State& state)
{
    state.PauseTiming();
    QCoreApplication::processEvents();
    state.ResumeTiming();
}

/// Fills a scene with plain rectangles, the yardstick of a rebuild that makes as many items.
template <typename RectOf>
void refill(benchmark::State& state, int count, RectOf rectOf)
{
    QGraphicsScene scene;
    for (auto _ : state) {
        scene.clear();
        for (int i = 0; i < count; ++i)
            scene.addRect(rectOf(i))->setFlag(QGraphicsItem::ItemIsSelectable);
        settle(state);
    }
}

/// A press, move or release of the left button at a place of a widget.
inline void mouse(QWidget* widget, QEvent::Type type, const QPointF& place)
{
    const bool move = type == QEvent::MouseMove;
    const bool release = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, place, widget->mapToGlobal(place), move ? Qt::NoButton : Qt::LeftButton,
                      release ? Qt::NoButton : Qt::LeftButton, {});
    QApplication::sendEvent(widget, &event);
}

/// One move of the mouse up to the repainted screen, in a drag of what stands at a place.
inline void dragSteps(benchmark::State& state, QWidget* grid, const QPointF& place)
{
    mouse(grid, QEvent::MouseButtonPress, place);
    int step = 0;
    for (auto _ : state) {
        mouse(grid, QEvent::MouseMove, place + QPointF(32.0 * (++step % 20), 0.0));
        QCoreApplication::processEvents();
    }
    mouse(grid, QEvent::MouseMove, place);
    mouse(grid, QEvent::MouseButtonRelease, place);
}

/// Paints a widget alone, into an image of its size.
inline void paint(benchmark::State& state, QWidget* widget)
{
    QImage image(widget->size(), QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter painter(&image);
        widget->render(&painter);
    }
}

/// Measures an editor by what it does on stages of its own: on a full one, a small one, and on
/// those of `Stage::ofBars()`, where there is hardly anything to be seen of a song of so many bars.
/// A stage has a `grid()`, a place in it by which to drag, `grip()`, and can `rebuild()` its scene.
template <typename Stage>
void addEditor(Stage& full, Stage& small)
{
    const auto add = [](const char* name, const auto& steps) {
        benchmark::RegisterBenchmark(name, steps)->Unit(benchmark::kMillisecond);
    };
    const auto drag = [](Stage& stage) {
        return [&](benchmark::State& state) { dragSteps(state, stage.grid(), stage.grip()); };
    };
    const auto grid = [](int bars) {
        return [bars](benchmark::State& state) { paint(state, Stage::ofBars(bars)->grid()); };
    };
    add("rebuild", [&](benchmark::State& state) {
        for (auto _ : state) {
            full.rebuild();
            settle(state);
        }
    });
    add("dragStepInAFullSong", drag(full));
    add("dragStepInASmallSong", drag(small));
    add("gridOfAHundredBars", grid(100));
    add("gridOfTenThousandBars", grid(10000));
}

} // namespace Editing
