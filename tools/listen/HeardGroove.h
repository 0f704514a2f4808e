#pragma once

#include <QString>

struct GrooveTemplate;

/// What a groove comes to on a track as it is made, at the usual tempo of its rhythm: "0.75: +13
/// ms". Only leans of half a millisecond and more are told; without any, that there are none.
QString heardGroove(const GrooveTemplate& groove, int bpm);
