#pragma once

/// The frames that voice analysis and pitch shifting share, in samples: the tuner pairs each
/// detected pitch with the shifter's frame of the same number.
inline constexpr int kFrameSize = 2048;

/// Distance between the starts of consecutive frames.
inline constexpr int kHopSize = 512;
