// The page of reports: a template, and what fills it.
#ifndef KOLUM_TOOL_REPORT_PAGE_H
#define KOLUM_TOOL_REPORT_PAGE_H

#include <span>
#include <string_view>

namespace kolum::tool {

struct PagePart {
  std::span<const unsigned char> text;
  std::string_view slot;  // after the text; empty after the last
};

// Generated at build time from page.html, page.css, page.js and the packaged libraries.
std::span<const PagePart> pageParts();

}  // namespace kolum::tool

#endif
