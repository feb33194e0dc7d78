// Vantorel. MIT licence, see LICENSE.
// What a page posts, as WebKit hands it over, turned into the seam's value.
#pragma once

#import <Foundation/Foundation.h>

#include "platform/script_value.h"

namespace vantorel::mac {

/// `body` (NSNull, NSNumber, NSString, NSDate, NSArray, NSDictionary) with its depth and size bounded.
ScriptValue toScriptValue(id body);

}  // namespace vantorel::mac
