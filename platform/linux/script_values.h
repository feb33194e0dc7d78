// Vantorel. MIT licence, see LICENSE.
// Values that a page posts, as values of the seam.
#pragma once

#include <jsc/jsc.h>

#include <cstddef>

#include "platform/portable/script_value_limits.h"
#include "platform/script_value.h"

namespace vantorel::gtk {

/// How much of one message is kept.
struct ScriptValueLimits {
    /// Lists and dictionaries inside each other.
    std::size_t depth = kMaxScriptValueDepth;
    /// Members of all lists and dictionaries together.
    std::size_t members = kMaxScriptValueMembers;
    /// Bytes of all texts and keys together, those of 256 bytes and less not counted.
    std::size_t textBytes = kMaxScriptTextBytes;
};

/// Converts `value`. Objects that are neither lists nor plain dictionaries give a dictionary of what can be listed of
/// them; functions, symbols and what exceeds the limits give null; a text that is too long is cut at a character's end.
/// Main thread. Runs no code of the page: the value is a copy that the engine made.
ScriptValue scriptValueFrom(JSCValue* value, const ScriptValueLimits& limits = {});

} // namespace vantorel::gtk
