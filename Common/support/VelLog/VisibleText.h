// Keeps a record's text from passing for more than one record.
#pragma once

#include "VelBase/WideText.h"

namespace VelLog {

// Returns the text with every character that would break or reorder the line (controls, line and
// paragraph separators, directional marks, embeddings and isolates) written as \u and four
// upper-case hexadecimal digits. Everything else, a backslash included, is unchanged.
VelBase::WideText MakeControlsVisible(VelBase::WideText text);

}  // namespace VelLog
