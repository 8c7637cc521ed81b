/*
 * Commands to the media-library server, and their layout on the wire.
 *
 * Each command has its own connection to the server's socket file: one request, one answer, then it
 * is closed. Any number of threads and processes may send at the same time. docs/server-protocol.md
 * describes the whole protocol.
 */
#ifndef KOLUM_SERVER_H
#define KOLUM_SERVER_H

#include <kolum/export.h>

/* The server's status. */
enum {
  LUM_STATUS_IDLE = 0,
  LUM_STATUS_BUSY = 1,
  LUM_STATUS_STOP = 2,
  LUM_STATUS_PAUSE = 3,
  LUM_STATUS_SLEEP = 4
};

/* The results of commands to the server. */
enum {
  LUM_COMMAND_OK = 0,
  LUM_COMMAND_FAILED = 1, /* of sendCommand */
  LUM_ACTION_FAILED = 3   /* of sendActionToLumServer */
};

KOLUM_C_BEGIN

/* The names of LUM_STATUS_*: "idle", "busy", "stop", "pause", "sleep". */
KOLUM_EXPORT extern const char* kLumServerStatusName[5];

KOLUM_C_END

#ifdef __cplusplus

#include <cstddef>
#include <cstdint>

namespace MediaLibrary::LUM {

/*
 * The layout of requests and answers: offsets and sizes in bytes. Numbers are 64-bit in host byte
 * order, little-endian on the target.
 */
namespace wire {

inline constexpr char kSocketPath[] = "/tmp/.mllumsocket.xxx"; /* the ".xxx" is part of the name */
inline constexpr std::size_t kBufferSize = 4096;               /* the buffer of either end */
inline constexpr long kTimeOutSeconds = 30; /* the client's, for each direction */

/* Request: command code (signed), length of the payload (unsigned), payload. */
inline constexpr std::size_t kRequestCommandOffset = 0;
inline constexpr std::size_t kRequestLengthOffset = 8;
inline constexpr std::size_t kRequestPayloadOffset = 16;
inline constexpr std::size_t kRequestPayloadMax = kBufferSize - kRequestPayloadOffset;

/* Answer: result code (signed), length of the text (unsigned; 0 when there is none), eight reserved
   bytes, text with its terminator. The text begins eight bytes further on than a request's payload;
   both ends depend on it. */
inline constexpr std::size_t kAnswerResultOffset = 0;
inline constexpr std::size_t kAnswerLengthOffset = 8;
inline constexpr std::size_t kAnswerReservedOffset = 16;
inline constexpr std::size_t kAnswerTextOffset = 24;
inline constexpr std::size_t kAnswerReadMax = kBufferSize - 1; /* keeps the text terminated */
inline constexpr std::size_t kAnswerTextMax = kAnswerReadMax - kAnswerTextOffset;

inline constexpr std::int64_t kResultSuccess = 1;

}  // namespace wire

/* A server's answer. Zero it before the call. */
struct SocketResp_t {
  std::int64_t result;  /* the server's result code, 1 for success */
  std::uint64_t length; /* the server's length of its text, unchecked; 0: no text */
  char* data; /* the terminated text, set only when length is not 0; release with free() */
};

}  // namespace MediaLibrary::LUM

/*
 * Sends COMMAND with the LEN bytes at DATA (at most 4080) and reads the answer into RESP. If DATA
 * is null, the request gives its length as 0, but LEN zero bytes still follow it.
 *
 * The write and the read may each take up to 30 seconds. The answer is what one read returns, so a
 * server must send it in one piece: anything sent later is lost. This stays so because servers in
 * the field depend on it. data in RESP always has room for the longest text, 4071 bytes, and its
 * terminator; a length beyond that must not be trusted.
 *
 * Returns LUM_COMMAND_OK when the server answered with result 1, and LUM_COMMAND_FAILED for every
 * other outcome: no server listens, writing or reading failed, another result, a null RESP, LEN too
 * large, out of memory. RESP is filled whenever an answer was read, even with another result (a
 * connection closed without an answer reads as result 0), and is left alone otherwise; data stays
 * untouched when there was no text.
 */
KOLUM_EXPORT int sendCommand(MediaLibrary::LUM::SocketResp_t* resp, int command, const char* data,
                             unsigned long len) noexcept;

/*
 * Sends COMMAND with two numbers, each as signed 64-bit: VALUE1, then VALUE2. Returns
 * LUM_COMMAND_OK when the server answered with result 1, else LUM_ACTION_FAILED. Any text in the
 * answer is dropped.
 */
KOLUM_EXPORT int sendActionToLumServer(int command, int value1, int value2) noexcept;

#endif

#endif
