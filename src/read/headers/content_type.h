// What the first bytes of a file say that it is, whatever its name.
#ifndef KOLUM_READ_HEADERS_CONTENT_TYPE_H
#define KOLUM_READ_HEADERS_CONTENT_TYPE_H

#include <string_view>

#include "media/source.h"

namespace kolum::headers {

// A MIME type; empty if the bytes say none. Containers of films and songs count as films, except
// for those that only songs have.
std::string_view contentType(const media::Source& source);

}  // namespace kolum::headers

#endif
