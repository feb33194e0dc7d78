// Vantorel. MIT licence, see LICENSE.
// A pipe over NSPipe, read on a queue of its own.
#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::shared_ptr<Pipe> makePipe();

/// The NSPipe behind `pipe`; nil for null.
NSPipe* nsPipeOf(const std::shared_ptr<Pipe>& pipe);

}  // namespace vantorel::mac
