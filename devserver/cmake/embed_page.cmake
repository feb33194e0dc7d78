# Vantorel. MIT licence, see LICENSE.
# Writes the page's files into one C++ source: cmake -D PAGE_DIR=… -D OUTPUT=… -D "FILES=a;b" -P embed_page.cmake

set(types_html "text/html; charset=utf-8")
set(types_css "text/css; charset=utf-8")
set(types_js "text/javascript; charset=utf-8")
set(types_svg "image/svg+xml")

set(arrays "")
set(rows "")
set(index 0)
foreach(file IN LISTS FILES)
    get_filename_component(extension "${file}" LAST_EXT)
    string(SUBSTRING "${extension}" 1 -1 extension)
    if(NOT DEFINED types_${extension})
        message(FATAL_ERROR "No content type is known for ${file}")
    endif()
    file(READ "${PAGE_DIR}/${file}" hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
    string(APPEND arrays "constexpr char kFile${index}[] = {${bytes}};\n")
    if(file STREQUAL "index.html")
        set(path "/")
    else()
        set(path "/${file}")
    endif()
    string(APPEND rows "    PageAsset{\"${path}\", \"${types_${extension}}\", {kFile${index}, sizeof kFile${index}}},\n")
    math(EXPR index "${index} + 1")
endforeach()

file(WRITE "${OUTPUT}" "// Generated from devserver/page; changes here are lost.
#include \"devserver/page_assets.h\"

#include <array>

namespace vantorel::devserver {
namespace {

${arrays}
constexpr std::array<PageAsset, ${index}> kAssets = {
${rows}};

}  // namespace

std::span<const PageAsset> pageAssets() {
    return kAssets;
}

}  // namespace vantorel::devserver
")
