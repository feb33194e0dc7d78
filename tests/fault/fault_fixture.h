// Vantorel. MIT licence, see LICENSE.
// The controller over a platform of which one part is broken.
#pragma once

#include "tests/fault/forwarding_platform.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fault {

/// `Broken` is a ForwardingPlatform that breaks something; `platform_` is the sound fake behind it.
template<typename Broken>
class FaultTest : public fake::ShellTest {
protected:
    Platform& platform() override { return broken_; }

    Broken broken_{platform_};
};

} // namespace vantorel::fault
