#include <algorithm>
#include <vector>

#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

constexpr std::size_t kPacketSize = 188;
constexpr std::uint32_t kPmtPid = 0x100;
constexpr std::uint32_t kVideoPid = 0x101;

// CRC of the sections of a transport stream.
std::uint32_t sectionChecksum(const std::string& section) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : section) {
    crc ^= static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 24;
    for (int i = 0; i < 8; ++i) crc = (crc << 1) ^ ((crc & 0x80000000U) != 0 ? 0x04C11DB7U : 0U);
  }
  return crc;
}

// PAYLOAD in as many packets as it needs; the first is marked as its start.
std::string packets(std::uint32_t pid, const std::string& payload) {
  std::string result;
  for (std::size_t at = 0; at < payload.size();) {
    const std::size_t room = kPacketSize - 4;
    const std::size_t size = std::min(room, payload.size() - at);
    const std::uint32_t start = at == 0 ? 0x4000 : 0;
    std::string packet = "G" + big16(start | pid);
    if (size == room) {
      packet += "\x10";
    } else {
      // An adaptation field pads the packet.
      const std::size_t padding = room - size;
      packet += "\x30" + bigEndian(padding - 1, 1);
      if (padding > 1) packet += zeros(1) + repeated("\xFF", padding - 2);
    }
    result += packet + payload.substr(at, size);
    at += size;
  }
  return result;
}

std::string section(int table, std::uint32_t id, const std::string& body, int number = 0,
                    int last = 0) {
  std::string text = bigEndian(static_cast<std::uint64_t>(table), 1) +
                     big16(0xB000 | (body.size() + 9)) + big16(id) + "\xC1" +
                     bigEndian(static_cast<std::uint64_t>(number), 1) +
                     bigEndian(static_cast<std::uint64_t>(last), 1) + body;
  return zeros(1) + text + bigEndian(sectionChecksum(text), 4);
}

std::string programTable(int type, std::uint32_t pid = kVideoPid) {
  return section(2, 1,
                 big16(0xE000 | pid) + big16(0xF000) +
                     bigEndian(static_cast<std::uint64_t>(type), 1) + big16(0xE000 | pid) +
                     big16(0xF000));
}

std::string head(int type) {
  return packets(0, section(0, 1, big16(1) + big16(0xE000 | kPmtPid))) +
         packets(kPmtPid, programTable(type));
}

std::string pes(const std::string& data, int stream = 0xE0, std::uint64_t time = 0) {
  const std::string stamp = bigEndian(0x21 | (time >> 30 & 7) << 1, 1) +
                            big16((time >> 15 & 0x7FFF) << 1 | 1) + big16((time & 0x7FFF) << 1 | 1);
  const std::size_t size = data.size() + 8;
  return std::string("\0\0\1", 3) + bigEndian(static_cast<std::uint64_t>(stream), 1) +
         big16(size > 0xFFFF ? 0 : size) + "\x80\x80\x05" + stamp + data;
}

enum StreamType { kMpeg2 = 0x02, kMpeg4 = 0x10, kH264 = 0x1B, kHevc = 0x24, kAacInTs = 0x0F };

// Long enough to be recognized at once; pictures come 25 times a second.
std::string streamOf(int type, const std::string& pictures, std::uint64_t count = 100) {
  std::string stream = head(type);
  for (std::uint64_t i = 0; i < count; ++i)
    stream += packets(kVideoPid, pes(pictures, 0xE0, 3600 * i));
  return stream;
}

// Packets that look well from outside.
std::string noisePackets(std::size_t count) {
  const std::string bytes = noise(8192 * (kPacketSize - 1));
  std::string some;
  for (std::size_t at = 0; at < bytes.size(); at += kPacketSize - 1)
    some += "G" + bytes.substr(at, kPacketSize - 1);
  return repeated(some, count / 8192);
}

std::string manyPrograms() {
  std::string stream;
  for (int sectionNumber = 0; sectionNumber < 250; ++sectionNumber) {
    std::string body;
    for (std::uint32_t i = 0; i < 250; ++i) {
      const std::uint32_t program = 1 + static_cast<std::uint32_t>(sectionNumber) * 250 + i;
      body += big16(program) + big16(0xE000 | (0x20 + program % 8000));
    }
    stream += packets(0, section(0, 1, body, sectionNumber, 249));
  }
  return stream + head(kH264) + packets(kVideoPid, pes(zeros(64)));
}

std::string manyElementaryStreams() {
  std::string stream;
  std::string programs;
  for (std::uint32_t program = 1; program <= 200; ++program)
    programs += big16(program) + big16(0xE000 | (0x1000 + program));
  stream += packets(0, section(0, 1, programs));
  for (std::uint32_t program = 1; program <= 200; ++program) {
    std::string streams;
    for (std::uint32_t i = 0; i < 190; ++i)
      streams += "\x1B" + big16(0xE000 | (0x20 + (program * 190 + i) % 8000)) + big16(0xF000);
    stream +=
        packets(0x1000 + program, section(2, program, big16(0xFFFF) + big16(0xF000) + streams));
  }
  return stream + repeated(packets(0x20, pes(zeros(64))), 1000);
}

// Each of all packet identifiers starts a packet of its own.
std::string allPids(int stream) {
  std::string result;
  for (std::uint32_t pid = 0x20; pid < 0x1FFF; ++pid)
    result += packets(pid, pes(zeros(400), stream));
  return repeated(result, 3);
}

std::string services() {
  std::string stream;
  for (std::uint32_t i = 0; i < 20'000; ++i) {
    const std::string descriptor = "\x48\x07\x01\x02pp\x02nn";
    const std::string service =
        big16(i % 60'000) + "\xFC" + big16(0x8000 | descriptor.size()) + descriptor;
    stream += packets(0x11, section(0x42, 1, big16(1) + "\xFF" + service));
  }
  return head(kH264) + stream + packets(kVideoPid, pes(zeros(64)));
}

// --- Elementary streams ---

std::string startCode(int type) {
  return std::string("\0\0\1", 3) + bigEndian(static_cast<std::uint64_t>(type), 1);
}

// MPEG-1 or MPEG-2: a sequence of intra pictures with a slice each.
std::string mpeg2(std::uint32_t side) {
  Bits sequence;
  sequence.put(side, 12).put(side, 12).put(1, 4).put(3, 4).put(50000, 18).put(1, 1).put(100, 10);
  sequence.put(0, 3);
  Bits extension;
  extension.put(1, 4).put(0x48, 8).put(1, 1).put(1, 2).put(side >> 12, 2).put(side >> 12, 2);
  extension.put(0, 12).put(1, 1).put(0, 8).put(0, 1).put(0, 7);
  Bits picture;
  picture.put(0, 10).put(1, 3).put(0xFFFF, 16).put(0, 3);
  Bits coding;
  coding.put(8, 4).put(0xFFFF, 16).put(0, 2).put(3, 2).put(0, 10).put(1, 1).put(0, 5);
  return startCode(0xB3) + sequence.bytes() + startCode(0xB5) + extension.bytes() +
         startCode(0x00) + picture.bytes() + startCode(0xB5) + coding.bytes() + startCode(0x01) +
         "\x22" + noise(64);
}

std::string mpeg4(std::uint32_t side) {
  Bits layer;
  layer.put(0, 1).put(1, 8).put(0, 1).put(1, 4).put(0, 1).put(0, 2).put(1, 1).put(25, 16).put(1, 1);
  layer.put(0, 1).put(1, 1).put(side, 13).put(1, 1).put(side, 13).put(1, 1);
  layer.put(0, 1).put(1, 1).put(0, 1).put(0, 1).put(0, 1).put(1, 1).put(1, 1).put(0, 2).put(0, 6);
  Bits picture;
  picture.put(0, 2).put(0, 1).put(1, 1).put(0, 5).put(1, 1).put(1, 1).put(0, 3).put(8, 5);
  return startCode(0xB0) + "\1" + startCode(0xB5) + "\x09" + startCode(0x00) + startCode(0x20) +
         layer.bytes() + startCode(0xB6) + picture.bytes() + noise(64);
}

// A baseline sequence of 16000 x 16000 and a first slice.
std::string h264(std::uint32_t side) {
  Bits sequence;
  sequence.put(66, 8).put(0, 8).put(62, 8).putGolomb(0).putGolomb(0).putGolomb(2).putGolomb(16);
  sequence.put(0, 1).putGolomb(side / 16 - 1).putGolomb(side / 16 - 1).put(1, 1).put(1, 1);
  sequence.put(0, 2).put(1, 1);
  Bits picture;
  picture.putGolomb(0).putGolomb(0).put(0, 2).putGolomb(0).putGolomb(0).putGolomb(0).put(0, 3);
  picture.putGolomb(0).putGolomb(0).putGolomb(0).put(0, 3).put(1, 1);
  Bits slice;
  slice.putGolomb(0).putGolomb(7).putGolomb(0).put(0, 4).putGolomb(0).put(0, 2).putGolomb(0);
  return zeros(1) + startCode(0x67) + sequence.bytes() + zeros(1) + startCode(0x68) +
         picture.bytes() + zeros(1) + startCode(0x65) + slice.bytes() + repeated("\xAA", 64);
}

// Thousands of different parameter sets.
std::string h264ParameterSets() {
  std::string stream;
  for (std::uint32_t i = 0; i < 200'000; ++i) {
    Bits sequence;
    sequence.put(66, 8).put(0, 8).put(62, 8).putGolomb(i % 32).putGolomb(0).putGolomb(2);
    sequence.putGolomb(16).put(0, 1).putGolomb(i % 900).putGolomb(900).put(1, 1).put(1, 1);
    sequence.put(0, 2).put(1, 1);
    stream += zeros(1) + startCode(0x67) + sequence.bytes();
  }
  return stream + h264(64);
}

// Without sequences that look like a start code.
std::string escaped(const std::string& bytes) {
  std::string result;
  int zerosBefore = 0;
  for (const char c : bytes) {
    if (zerosBefore == 2 && static_cast<unsigned char>(c) <= 3) {
      result += '\3';
      zerosBefore = 0;
    }
    zerosBefore = c == '\0' ? zerosBefore + 1 : 0;
    result += c;
  }
  return result;
}

std::string hevc(std::uint32_t side) {
  const auto profile = [](Bits& bits) {
    bits.put(1, 8).put(0x60000000, 32).put(0, 48).put(186, 8);
  };
  Bits video;
  video.put(0, 4).put(3, 2).put(0, 6).put(0, 3).put(1, 1).put(0xFFFF, 16);
  profile(video);
  video.put(1, 1).putGolomb(0).putGolomb(0).putGolomb(0).put(0, 6).putGolomb(0).put(0, 2).put(1, 1);
  Bits sequence;
  sequence.put(0, 4).put(0, 3).put(1, 1);
  profile(sequence);
  sequence.putGolomb(0).putGolomb(1).putGolomb(side).putGolomb(side).put(0, 1).putGolomb(0);
  sequence.putGolomb(0).putGolomb(4).put(1, 1).putGolomb(0).putGolomb(0).putGolomb(0);
  sequence.putGolomb(0).putGolomb(3).putGolomb(0).putGolomb(3).putGolomb(0).putGolomb(0);
  sequence.put(0, 4).putGolomb(0).put(0, 5).put(1, 1);
  Bits picture;
  picture.putGolomb(0).putGolomb(0).put(0, 7).putGolomb(0).putGolomb(0).putGolomb(0).put(0, 3);
  picture.putGolomb(0).putGolomb(0).put(0, 10).putGolomb(0).put(0, 2).put(1, 1);
  const auto unit = [](int type) { return zeros(1) + startCode(type << 1) + "\1"; };
  return unit(32) + escaped(video.bytes()) + unit(33) + escaped(sequence.bytes()) + unit(34) +
         escaped(picture.bytes()) + unit(19) + "\xAC" + noise(64);
}

std::string programStreamPack() {
  return startCode(0xBA) + std::string("\x44\0\4\0\4\1\1\x89\xC3\xF8", 10);
}

std::string programStream(const std::string& pictures) {
  return programStreamPack() + pes(pictures) + pes(pictures, 0xE0, 3600) +
         pes(pictures, 0xE0, 7200);
}

std::string allStreamIds() {
  std::string stream = programStreamPack();
  for (int id = 0xBC; id <= 0xFF; ++id) stream += pes(zeros(100), id);
  for (int subStream = 0; subStream < 256; ++subStream)
    stream += pes(bigEndian(static_cast<std::uint64_t>(subStream), 1) + zeros(100), 0xBD);
  return repeated(stream, 500);
}

std::string programStreamNoise() {
  return programStream(mpeg2(64)) + repeated(noise(kMiB), 128);
}

std::string startCodes() {
  return programStream(mpeg2(64)) + repeated(startCode(0xBA), 8'000'000);
}

}  // namespace

std::string hugeMpeg2() {
  return mpeg2(kHugeSide);
}

std::string hugeMpeg4() {
  constexpr std::uint32_t kLongestSide = 8191;
  return mpeg4(kLongestSide);
}

std::string hugeH264() {
  return h264(kHugeSide);
}

std::string hugeHevc() {
  return hevc(kHugeSide);
}

HostileFiles hostileStreams() {
  return {
      {"headThenNoise.ts",
       [] {
         return head(kH264) + repeated(packets(0x1FFF, zeros(184)), 100) +
                repeated(noise(kMiB), 128);
       }},
      {"headThenNoise.m2ts",
       [] { return repeated(head(kMpeg2), 100) + repeated(noise(kMiB), 128); }},
      {"headThenHole.ts", [] { return head(kH264); }, std::int64_t{1} << 40},
      {"headThenNullPackets.ts",
       [] { return head(kH264) + repeated(packets(0x1FFF, zeros(184)), 700'000); }},
      {"picturesThenNoise.ts",
       [] { return streamOf(kH264, h264(64)) + repeated(noise(kMiB), 128); }},
      {"picturesThenPackets.ts",
       [] { return streamOf(kMpeg2, mpeg2(64)) + noisePackets(700'000); }},
      {"picturesThenNullPackets.ts",
       [] { return streamOf(kMpeg2, mpeg2(64)) + repeated(packets(0x1FFF, zeros(184)), 700'000); }},
      {"manyPrograms.ts", manyPrograms},
      {"manyElementaryStreams.ts", manyElementaryStreams},
      {"allPidsOfVideo.ts", [] { return allPids(0xE0); }},
      {"allPidsOfAudio.ts", [] { return allPids(0xC0); }},
      {"services.ts", services},
      {"hugeMpeg2.ts", [] { return streamOf(kMpeg2, hugeMpeg2(), 10); }},
      {"hugeMpeg4.ts", [] { return streamOf(kMpeg4, hugeMpeg4(), 10); }},
      {"hugeH264.ts", [] { return streamOf(kH264, hugeH264(), 10); }},
      {"hugeHevc.ts", [] { return streamOf(kHevc, hugeHevc(), 10); }},
      {"hugeMpeg2.mpg", [] { return programStream(hugeMpeg2()); }},
      {"hugeMpeg4.mpg", [] { return programStream(hugeMpeg4()); }},
      {"hugeH264.mpg", [] { return programStream(hugeH264()); }},
      {"hugeMpeg2.m2v", [] { return repeated(hugeMpeg2(), 20); }},
      {"hugeMpeg4.m4v", [] { return repeated(hugeMpeg4(), 20); }},
      {"hugeH264.h264", [] { return repeated(hugeH264(), 20); }},
      {"hugeHevc.hevc", [] { return repeated(hugeHevc(), 20); }},
      {"parameterSets.h264", h264ParameterSets},
      {"noise.h264", [] { return repeated(h264(64), 20) + repeated(noise(kMiB), 128); }},
      {"allStreamIds.mpg", allStreamIds},
      {"headThenNoise.mpg", programStreamNoise},
      {"startCodes.vob", startCodes},
  };
}

}  // namespace kolum::test
