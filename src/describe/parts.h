// The parts of a document: each has its keys and adds their values.
#ifndef KOLUM_DESCRIBE_PARTS_H
#define KOLUM_DESCRIBE_PARTS_H

#include <span>

#include "describe/document.h"
#include "describe/keys.h"
#include "describe/value.h"

namespace kolum::describe {

struct Part {
  Group group;
  void (*add)(Value& object, const Document& document);
};

Part filePart();
Part mediaPart();
Part videoPart();
Part filmPart();
Part soundPart();
Part songPart();
Part discPart();
Part photoPart();
Part placePart();
Part streamPart();
Part problemPart();

}  // namespace kolum::describe

#endif
