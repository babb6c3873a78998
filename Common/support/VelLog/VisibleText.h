// Record texts that cannot pretend to be more than one record.
#pragma once

#include "VelBase/WideText.h"

namespace VelLog {

// The text with every character that would break or reorder the line (controls, line and paragraph
// separators, directional marks, embeddings and isolates) written out as \u and four upper-case
// hexadecimal digits. All else, a backslash included, stays as it is.
VelBase::WideText MakeControlsVisible(const VelBase::WideText& text);

}  // namespace VelLog
