#pragma once

#include <QEventLoop>
#include <QTimer>

#include <functional>

/// Runs the event loop until a condition holds; false if it does not come to hold. A server that
/// shares this loop answers at once, which it cannot where QTest sleeps between two looks.
inline bool await(const std::function<bool()>& holds)
{
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (holds())
            loop.exit(1);
    });
    look.start(2);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    return holds() || loop.exec() == 1;
}
