#pragma once

#include <QString>

/// A time as minutes and seconds: "0:07", "75:00". A negative one is none.
QString clockText(qint64 seconds);
