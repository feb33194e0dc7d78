// Vantorel. MIT licence, see LICENSE.
// The seam to ApplicationServices: trust for accessibility, which lets key presses of other applications be seen.
#pragma once

namespace vantorel {

class Accessibility {
public:
    virtual ~Accessibility() = default;

    /// Whether key presses of other applications can be watched; asks nobody.
    virtual bool isProcessTrusted() = 0;
    /// As isProcessTrusted; with `prompt` the system shows its own prompt when the answer is no.
    virtual bool isProcessTrustedWithOptions(bool prompt) = 0;
};

} // namespace vantorel
