// Vantorel. MIT licence, see LICENSE.
// Menus over NSMenu.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <string>

#include "platform/appkit.h"

namespace vantorel::mac {

std::shared_ptr<Menu> makeMenu(const std::string& title);
std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action, const std::string& keyEquivalent);
std::shared_ptr<MenuItem> makeSeparatorItem();

/// The NSMenu behind `menu`; nil for null.
NSMenu* nsMenuOf(const std::shared_ptr<Menu>& menu);

}  // namespace vantorel::mac
