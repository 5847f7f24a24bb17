// afx_position.h - POSITION, the place of a walk through a list or map.
#pragma once

struct AfxPosition;
using POSITION = AfxPosition*;  // null: nothing, or the end
