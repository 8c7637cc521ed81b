// Why a library cannot be used.
#ifndef KOLUM_SCAN_ERRORS_H
#define KOLUM_SCAN_ERRORS_H

#include <stdexcept>
#include <string>

namespace kolum::scan {

// The one exception of the store. what() is a sentence for people that names the library's file.
class StoreError : public std::runtime_error {
 public:
  enum class Kind {
    kMissing,        // there is none yet, or one that another process is just making
    kCannotOpen,     // its folder is missing, or it is no file
    kInUse,          // another scan, or another writer, has it
    kDiskFull,       // also quotas; what was committed is safe
    kReadOnly,       // the file, its folder or the disk
    kNotALibrary,    // another file, or a database of something else
    kNewer,          // made by a later kolum
    kDamaged,        // the database's structure is broken
    kBadExpression,  // of --where: a syntax error, or more than it may do
    kTooLong,        // a query was stopped: its time was up, or its caller wanted so
    kBadDocument,    // a document is not a JSON object, or too large
    kOther,
  };

  StoreError(Kind kind, const std::string& reason) : std::runtime_error(reason), kind_(kind) {}
  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

}  // namespace kolum::scan

#endif
