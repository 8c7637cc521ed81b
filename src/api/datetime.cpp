#include <kolum/datetime.h>

#include "media/dates.h"

using namespace kolum;

int checkCharRange(char c, char max) {
  return media::fitsDate(c, max) ? 1 : 0;
}

int isYYYYMMDD(char* text) {
  return text != nullptr && media::normalizeDate(text) ? 1 : 0;
}

int64_t DateTimeStringToSeconds(const char* text) {
  return media::secondsOfDate(text != nullptr ? text : "");
}

unsigned int getUniqueNumer() {
  return media::uniqueNumber();
}
