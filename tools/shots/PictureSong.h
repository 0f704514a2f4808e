#pragma once

#include "model/Song.h"

class LoopLibrary;

/// The song of the pictures, four bars in C major: what is in it decides what the pictures show, so
/// it stays the same. The loops are those of the first rhythm in 4/4.
Song pictureSong(const LoopLibrary& library);
