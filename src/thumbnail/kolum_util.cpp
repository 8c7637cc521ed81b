#include <kolum/host.h>
#include <kolum/thumbnail.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "support/log.h"
#include "thumbnail/artwork.h"

namespace thumbnail = kolum::thumbnail;

const char* const kVideoPosterExtList[3] = {".jpeg", ".png", ".jpg"};
const int kVideoPosterExtNum = 3;

namespace {

constexpr char kSource[] = "kolum_util";
constexpr char kTraceColour[] = "\033[1;35m";  // bold magenta

#define TRACE(...)                                                                          \
  koDebugUtilWrapperPrint(kolum::kLogLevel, kTraceColour, kSource, __LINE__, "ExecCommand", \
                          __VA_ARGS__)

// The child's part. The trace line and the environment are wanted although neither is safe in a
// process forked off several threads; nothing may be added. Status 0 for a program that cannot be
// started is wanted, too: hosts call tools that only some appliances have.
[[noreturn]] void runInChild(const char** argv) {
  TRACE("\n");
  setenv("LD_LIBRARY_PATH", "/usr:/usr/lib", 1);
  // execvp takes the arguments as non-const for historic reasons only and changes nothing.
  execvp(argv[0], const_cast<char**>(argv));
  _exit(0);
}

// The child's wait status. A fork that failed leaves 0, like a program that cannot be started;
// waiting then would take, and wait for, any other child of the host.
int waitForChild(pid_t child) {
  int status = 0;
  if (child < 0) return status;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

int resultOf(int status, bool wantsExitCode) {
  if (WTERMSIG(status) != 0) return 1;
  const int code = WEXITSTATUS(status);
  return wantsExitCode ? code : static_cast<int>(code != 0);
}

// A relative path that begins with "-" would be an option.
std::string asOperand(const char* path) {
  return *path == '-' ? std::string("./") + path : path;
}

int copyAndOpen(const char* src, const char* dst) {
  const std::string from = asOperand(src);
  const std::string to = asOperand(dst);
  const char* copy[] = {"/bin/cp", from.c_str(), to.c_str(), nullptr};
  KoUtil_ExecSync(copy, 0);
  const char* chmod[] = {"/bin/chmod", "666", to.c_str(), nullptr};
  return KoUtil_ExecSync(chmod, 0);
}

void copyOut(const std::string& text, char* out) {
  std::memcpy(out, text.c_str(), text.size() + 1);
}

int checkArtist(const char* base, const char* artist, char* relPath) {
  const auto picture = thumbnail::artistPicture(artist);
  if (!picture) return 0;
  copyOut(*picture, relPath);
  return thumbnail::hasArtistPicture(base, *picture) ? 1 : 0;
}

int checkAlbum(const char* base, const char* artist, const char* album, char* relPath) {
  const auto names = thumbnail::albumNames(artist, album);
  if (!names) return 0;
  copyOut(names->thumbnail(), relPath);
  return thumbnail::hasAlbumThumbnail(base, *names) ? 1 : 0;
}

}  // namespace

int ExecCommand(const char** argv, int returnExitCode) {
  if (argv == nullptr || argv[0] == nullptr) return 1;
  const pid_t child = fork();
  if (child == 0) runInChild(argv);
  TRACE("\n");
  const int status = waitForChild(child);
  TRACE(" status = %d \n", status);
  return resultOf(status, returnExitCode != 0);
}

int isFileExist(const char* path) {
  struct stat status {};
  return path != nullptr && stat(path, &status) == 0 ? 1 : 0;
}

int copyAndChmod(const char* src, const char* dst) try {
  if (src == nullptr || dst == nullptr) return -1;
  return copyAndOpen(src, dst);
} catch (const std::exception&) {
  return -1;
}

int LUM_IsTranscodeFileExist(const char* folder, const char* fileName) try {
  if (folder == nullptr || fileName == nullptr) return -1;
  return thumbnail::hasTranscodedCopy(folder, fileName) ? 0 : -1;
} catch (const std::exception&) {
  return -1;
}

int LUM_CheckMusicArtistThumbnail(const char* base, const char* artist, char* relPath) try {
  if (base == nullptr || artist == nullptr || relPath == nullptr) return 0;
  return checkArtist(base, artist, relPath);
} catch (const std::exception&) {
  return 0;
}

int LUM_CheckMusicAlbumArt(const char* base, const char* artist, const char* album,
                           char* relPath) try {
  if (base == nullptr || artist == nullptr || album == nullptr || relPath == nullptr) return 0;
  return checkAlbum(base, artist, album, relPath);
} catch (const std::exception&) {
  return 0;
}
