// Vantorel. MIT licence, see LICENSE.
// The page's files, compiled into the program. The definition is generated from devserver/page at build time.
#pragma once

#include <span>
#include <string_view>

namespace vantorel::devserver {

/// One file of the page. All views live as long as the program.
struct PageAsset {
    std::string_view path;        ///< The request path, from the root: "/", "/playground.css", …
    std::string_view contentType; ///< The Content-Type header, character set included.
    std::string_view body;
};

/// Every file of the page; index.html comes under "/".
std::span<const PageAsset> pageAssets();

} // namespace vantorel::devserver
