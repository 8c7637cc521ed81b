// All details of a stream as one line of text.
#ifndef KOLUM_TESTS_ANSWERS_DETAILS_TEXT_H
#define KOLUM_TESTS_ANSWERS_DETAILS_TEXT_H

#include <string>

#include "media/stream_details.h"

namespace kolum::test {

// Only what is known, as " NAME VALUE".
std::string detailsText(const media::StreamDetails& details);

}  // namespace kolum::test

#endif
