// Vantorel. MIT licence, see LICENSE.
// The blocks' runtime under the name by which GNUstep's headers ask for it.
#pragma once

#include <Block.h>
