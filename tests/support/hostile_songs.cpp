#include "support/dsd_builder.h"
#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

// --- MP3 and ID3v2 ---

std::string mp3Frames(std::size_t count) {
  constexpr std::size_t kSize = 417;  // 128 kbit/s, 44.1 kHz
  return repeated("\xFF\xFB\x90\x64" + zeros(kSize - 4), count);
}

std::string frame(const std::string& id, const std::string& content, std::uint32_t flags = 0) {
  return id + synchSafe(content.size()) + big16(flags) + content;
}

// A frame whose content inflates to SIZE bytes.
std::string inflatingFrame(const std::string& id, std::size_t size, const std::string& packed) {
  constexpr std::uint32_t kCompressedWithLength = 0x09;
  return frame(id, synchSafe(size) + packed, kCompressedWithLength);
}

std::string mp3With(const std::string& frames) {
  return id3v2TagOf(frames) + mp3Frames(20);
}

std::string inflatingFrames(const std::string& id) {
  constexpr std::size_t kSize = 16 * kMiB;
  const std::string one = inflatingFrame(id, kSize, deflatedZeros(kSize));
  return repeated(one, 3900 * kKiB / one.size());
}

std::string inflatingTexts() {
  constexpr std::size_t kSize = 16 * kMiB;
  const std::string packed = deflated("\3" + repeated("a", kSize - 1));
  std::string frames;
  for (int i = 0; i < 100; ++i)
    frames += inflatingFrame("T" + std::to_string(100 + i), kSize, packed);
  return frames;
}

std::string covers(std::size_t count, const std::string& picture) {
  return repeated(frame("APIC", "\3image/png" + std::string("\0\3\0", 3) + picture), count);
}

std::string distinctTexts(const std::string& id) {
  std::string frames;
  for (int i = 0; i < 100'000; ++i) {
    const std::string key = "key" + std::to_string(i);
    frames += frame(id, (id == "PRIV" ? key : "\3" + key) + '\0' + "v");
  }
  return frames;
}

std::string chapters() {
  std::string frames;
  for (std::uint32_t i = 0; i < 100'000; ++i)
    frames += frame("CHAP", "c" + std::to_string(i) + '\0' + big32(i) + big32(i + 1) + zeros(8));
  return frames;
}

// Chapters in chapters.
std::string nestedChapters() {
  constexpr std::size_t kDepth = 50'000;
  constexpr std::size_t kFrameHeader = 10;
  const std::string content = "c" + zeros(1) + zeros(16);
  const std::string title = frame("TIT2", "\3t");
  std::string frames;
  for (std::size_t inside = kDepth; inside > 0; --inside) {
    const std::size_t below = (inside - 1) * (kFrameHeader + content.size()) + title.size();
    frames += "CHAP" + synchSafe(content.size() + below) + zeros(2) + content;
  }
  return frames + title;
}

// Each NUL ends a value.
std::string endlessValues() {
  return repeated(
      frame("TPE1", "\3" + zeros(250'000)) + frame("TPE1", "\1" + repeated("a", 250'000)), 60);
}

std::string manyTags() {
  return repeated(id3v2TagOf(frame("TIT2", "\3t")), 500'000) + mp3Frames(20);
}

std::string apeTag(int count) {
  std::string items;
  for (int i = 0; i < count; ++i)
    items += little32(1) + little32(0) + "Key" + std::to_string(i) + '\0' + "v";
  const std::string rest =
      little32(2000) + little32(items.size() + 32) + little32(static_cast<std::uint32_t>(count));
  return "APETAGEX" + rest + little32(0xA0000000) + zeros(8) + items + "APETAGEX" + rest +
         little32(0x80000000) + zeros(8);
}

// --- FLAC ---

std::string flacBlock(int type, const std::string& data) {
  return bigEndian(static_cast<std::uint64_t>(type), 1) + bigEndian(data.size(), 3) + data;
}

std::string flacWith(const std::string& blocks) {
  const std::string streamInfo =
      big16(4096) + big16(4096) + zeros(6) + std::string("\x0A\xC4\x42\xF0\0\1\0\0", 8) + zeros(16);
  constexpr int kPadding = 0x81;  // the last block
  return "fLaC" + flacBlock(0, streamInfo) + blocks + flacBlock(kPadding, zeros(16)) +
         "\xFF\xF8\xC9\x18" + zeros(64);
}

constexpr int kSeekTable = 3;
constexpr int kComments = 4;
constexpr int kPicture = 6;

std::string seekTable() {
  std::string points;
  for (std::uint64_t i = 0; i < 900'000; ++i)
    points += bigEndian(i, 8) + bigEndian(i, 8) + big16(1);
  return flacWith(flacBlock(kSeekTable, points));
}

// --- Ogg ---

// CRC with Ogg's polynomial.
std::uint32_t oggChecksum(const std::string& page) {
  std::uint32_t crc = 0;
  for (const char c : page) {
    crc ^= static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 24;
    for (int i = 0; i < 8; ++i) crc = (crc << 1) ^ ((crc & 0x80000000U) != 0 ? 0x04C11DB7U : 0U);
  }
  return crc;
}

enum OggFlags { kOggNone = 0, kOggContinued = 1, kOggFirst = 2 };

std::string oggPage(std::uint32_t serial, std::uint32_t sequence, int flags,
                    const std::string& laces, const std::string& data) {
  std::string page = "OggS" + zeros(1) + bigEndian(static_cast<std::uint64_t>(flags), 1) +
                     zeros(8) + little32(serial) + little32(sequence) + zeros(4) +
                     bigEndian(laces.size(), 1) + laces + data;
  return page.replace(22, 4, little32(oggChecksum(page)));
}

// A packet in as many pages as it needs, from the page FROM on.
std::string oggPacket(std::uint32_t serial, std::uint32_t from, const std::string& packet,
                      int flags = kOggNone) {
  constexpr std::size_t kPageSize = 255 * 255;
  std::string pages;
  std::size_t at = 0;
  for (; packet.size() - at >= kPageSize; at += kPageSize)
    pages += oggPage(serial, from++, at == 0 ? flags : kOggContinued, repeated("\xFF", 255),
                     packet.substr(at, kPageSize));
  const std::string rest = packet.substr(at);
  const std::string laces = repeated("\xFF", rest.size() / 255) + bigEndian(rest.size() % 255, 1);
  return pages + oggPage(serial, from, at == 0 ? flags : kOggContinued, laces, rest);
}

std::string vorbisHeader() {
  return "\x01vorbis" + zeros(4) + "\2" + little32(44100) + zeros(12) + "\xB8\x01";
}

std::string oggVorbisWith(const std::string& comments) {
  return oggPacket(1, 0, vorbisHeader(), kOggFirst) +
         oggPacket(1, 1, "\x03vorbis" + comments + "\1");
}

std::string opusWith(const std::string& comments) {
  const std::string head = "OpusHead" + std::string("\1\2\0\0", 4) + little32(48000) + zeros(3);
  return oggPacket(1, 0, head, kOggFirst) + oggPacket(1, 1, "OpusTags" + comments) +
         oggPacket(1, 50'000, zeros(16));
}

std::string pictureComments(std::size_t count, const std::string& picture) {
  const std::string comment =
      countedText("METADATA_BLOCK_PICTURE=" + base64(flacPicture("image/png", picture)));
  return vorbisComments(static_cast<std::uint32_t>(count), repeated(comment, count));
}

std::string chapterComments() {
  std::string comments;
  for (int i = 0; i < 1000; ++i)
    comments += countedText("CHAPTER" + std::to_string(1000 + i).substr(1) + "=00:00:00.000");
  return vorbisComments(100'000, repeated(comments, 100));
}

std::string manySerials() {
  std::string pages;
  for (std::uint32_t serial = 1; serial <= 50'000; ++serial)
    pages += oggPacket(serial, 0, vorbisHeader(), kOggFirst);
  return pages;
}

std::string chains() {
  std::string pages;
  const std::string comments = vorbisComments(1, countedText("TITLE=t"));
  for (std::uint32_t serial = 1; serial <= 20'000; ++serial)
    pages += oggPacket(serial, 0, vorbisHeader(), kOggFirst) +
             oggPacket(serial, 1, "\x03vorbis" + comments + "\1") +
             oggPacket(serial, 2, "\x05vorbis");
  return pages;
}

// One packet that never ends.
std::string endlessPacket() {
  const std::string page = oggPage(1, 2, kOggContinued, repeated("\xFF", 255), noise(255 * 255));
  return oggPacket(1, 0, vorbisHeader(), kOggFirst) + repeated(page, 4000);
}

std::string emptyPages() {
  return oggPacket(1, 0, vorbisHeader(), kOggFirst) +
         repeated(oggPage(1, 1, kOggNone, "", ""), 1'000'000);
}

// Vorbis: code books of as many entries as fit.
std::string codeBooks() {
  const std::string header = "\x05vorbis\xFF";
  std::string books;
  for (int i = 0; i < 256; ++i)
    books += std::string("BCV\1\0\xFF\xFF\xFF\1", 9) + repeated("\xFF", 64);
  return oggVorbisWith(vorbisComments(0, "")) + oggPacket(1, 2, header + books) +
         oggPacket(1, 3, zeros(64));
}

std::string hugeTheora() {
  const std::string side = big16(kHugeSide / 16);
  const std::string pictureSide = bigEndian(kHugeSide, 3);
  const std::string header = "\x80theora" + std::string("\3\2\1", 3) + side + side + pictureSide +
                             pictureSide + zeros(2) + big32(25) + big32(1) + zeros(6) + zeros(5);
  return oggPacket(1, 0, header, kOggFirst) +
         oggPacket(1, 1, "\x81theora" + vorbisComments(0, "")) +
         oggPacket(1, 2, "\x82theora" + noise(4 * kKiB)) + oggPacket(1, 3, zeros(64));
}

// --- DSD ---

DsdFile dsdWithTag(const std::string& tag) {
  return {.seconds = 1, .tag = tag};
}

std::string inflatingDsf() {
  // Half a megabyte in the file; every letter then takes four bytes in memory.
  constexpr std::size_t kSize = 200 * kMiB;
  const std::string packed = deflated("\3" + repeated("a", kSize - 1));
  const std::string tag =
      id3v2TagOf(inflatingFrame("TIT2", kSize, packed) + inflatingFrame("TALB", kSize, packed));
  return dsfFile(dsdWithTag(tag));
}

std::string dffOfChunks() {
  const std::string chunk = "ABCD" + bigEndian(0, 8);
  const std::string version = "FVER" + bigEndian(4, 8) + big32(0x01050000);
  const std::string chunks = "DSD " + version + repeated(chunk, 1'000'000);
  return "FRM8" + bigEndian(chunks.size(), 8) + chunks;
}

std::string nestedDff() {
  std::string chunks;
  for (int i = 0; i < 5000; ++i)
    chunks = "PROP" + bigEndian(chunks.size() + 4, 8) + "SND " + chunks;
  chunks = "DSD " + chunks;
  return "FRM8" + bigEndian(chunks.size(), 8) + chunks;
}

// --- WAV and relatives ---

std::string wavFormat() {
  return riffChunk("fmt ", little16(1) + little16(2) + little32(44100) + little32(176400) +
                               little16(4) + little16(16));
}

std::string wavWith(const std::string& chunks) {
  return riffList("RIFF", "WAVE", chunks);
}

std::string wavWithInfo(const std::string& items) {
  return wavWith(wavFormat() + riffList("LIST", "INFO", items) + riffChunk("data", zeros(4096)));
}

std::string hugeChunk(const std::string& id, std::uint32_t size) {
  return "RIFF" + little32(0xFFFFFFFF) + "WAVE" + wavFormat() + id + little32(size);
}

std::string aiffWith(const std::string& chunks) {
  const std::string rate = std::string("\x40\x0E\xAC\x44", 4) + zeros(6);
  const std::string common = iffChunk("COMM", big16(2) + big32(1000) + big16(16) + rate);
  const std::string all = "AIFF" + common + chunks + iffChunk("SSND", zeros(4096));
  return "FORM" + big32(all.size()) + all;
}

// --- Others ---

std::string monkeysAudio() {
  constexpr std::uint32_t kFrames = 80'000'000;
  return "MAC " + little16(3990) + zeros(2) + little32(52) + little32(24) +
         little32(kFrames * 4ULL) + little32(0) + zeros(12) + zeros(16) + little16(2000) +
         little16(0) + little32(73728) + little32(1) + little32(kFrames) + little16(16) +
         little16(2) + little32(44100);
}

std::string trueAudio(std::uint32_t sampleRate, std::uint32_t samples) {
  const std::string header =
      "TTA1" + little16(1) + little16(2) + little16(16) + little32(sampleRate) + little32(samples);
  const std::string seekTable = little32(64);
  return header + little32(crc32Of(header)) + seekTable + little32(crc32Of(seekTable)) + zeros(64);
}

std::string wavPack() {
  const std::string block = "wvpk" + little32(24) + little16(0x410) + zeros(2) +
                            little32(0x7FFFFFFF) + zeros(4) + little32(0x7FFFFFFF) +
                            little32(0x1801) + zeros(4);
  return repeated(block, 1'000'000);
}

std::string musepack7() {
  return "MP+\x07" + little32(0x0FFFFFFF) + zeros(16) + zeros(256);
}

std::string coreAudio() {
  const std::string description = bigEndian(0x40E5888000000000, 8) + "aac " + zeros(4) + zeros(4) +
                                  big32(1024) + big32(2) + zeros(4);
  return "caff" + big16(1) + big16(0) + "desc" + bigEndian(description.size(), 8) + description +
         "pakt" + bigEndian(0x7FFFFFFF00000000, 8) + bigEndian(0x7FFFFFFF00000000, 8) + zeros(16) +
         repeated("\1", 8 * kMiB);
}

std::string auWithText() {
  return ".snd" + big32(0x7FFFFFF0) + big32(1000) + big32(3) + big32(44100) + big32(2) +
         repeated("TITLE=t\n", kMiB);
}

std::string amr() {
  return "#!AMR\n" + repeated(std::string(1, '\x7C'), 32 * kMiB);
}

}  // namespace

HostileFiles hostileSongs() {
  return {
      {"inflatingFrames.mp3", [] { return mp3With(inflatingFrames("TXXX")); }},
      {"inflatingCovers.mp3", [] { return mp3With(inflatingFrames("APIC")); }},
      {"inflatingObjects.mp3", [] { return mp3With(inflatingFrames("GEOB")); }},
      {"inflatingTexts.mp3", [] { return mp3With(inflatingTexts()); }},
      {"hugeCovers.mp3", [] { return mp3With(covers(kMostStreams, hugePng())); }},
      {"tooManyCovers.mp3", [] { return mp3With(covers(100'000, "x")); }},
      {"distinctTexts.mp3", [] { return mp3With(distinctTexts("TXXX")); }},
      {"distinctPrivateFrames.mp3", [] { return mp3With(distinctTexts("PRIV")); }},
      {"chapters.mp3", [] { return mp3With(chapters()); }},
      {"manyTags.mp3", manyTags},
      {"nestedChapters.mp3", [] { return mp3With(nestedChapters()); }},
      {"nestedContents.mp3", [] { return mp3With(frame("CTOC", zeros(3) + nestedChapters())); }},
      {"endlessValues.mp3", [] { return mp3With(endlessValues()); }},
      {"unsynchronized.mp3",
       [] {
         return "ID3\3" + zeros(1) + "\x80" + synchSafe(20 * kMiB) +
                repeated("\xFF" + zeros(1), 10 * kMiB);
       }},
      {"hugeTag.mp3",
       [] { return "ID3\4" + zeros(2) + "\x7F\x7F\x7F\x7F" + "TIT2\x7F\x7F\x7F\x7F" + zeros(2); },
       std::int64_t{1} << 40},
      {"endlessItem.ape",
       [] {
         const std::string item = little32(20 * kMiB) + zeros(4) + "Artist" + zeros(1 + 20 * kMiB);
         return "MAC " + zeros(64) + item + "APETAGEX" + little32(2000) +
                little32(item.size() + 32) + little32(1) + little32(0x80000000) + zeros(8);
       }},
      {"apeItems.tta", [] { return trueAudio(44100, 1000) + apeTag(65000); }},
      {"noise.mp3", [] { return repeated(noise(kMiB), 32); }},
      {"framesAndNoise.mp3", [] { return mp3Frames(20) + repeated(noise(kMiB), 32); }},
      {"noise.aac", [] { return repeated("\xFF\xF1\x50\x80\x02\x1F\xFC" + noise(9), 300'000); }},
      {"hugeCovers.flac",
       [] {
         return flacWith(
             repeated(flacBlock(kPicture, flacPicture("image/png", hugePng())), kMostStreams));
       }},
      {"distinctComments.flac",
       [] {
         return flacWith(
             flacBlock(kComments, vorbisComments(100'000, distinctVorbisComments(100'000))));
       }},
      {"hugeCommentCount.flac",
       [] { return flacWith(flacBlock(kComments, vorbisComments(0x80000000, ""))); }},
      {"pictureComments.flac",
       [] { return flacWith(flacBlock(kComments, pictureComments(kMostStreams, hugePng()))); }},
      {"seekTable.flac", seekTable},
      {"emptyBlocks.flac", [] { return flacWith(repeated(flacBlock(1, ""), 4'000'000)); }},
      {"commentBlocks.flac",
       [] {
         return flacWith(repeated(
             flacBlock(kComments, vorbisComments(1000, distinctVorbisComments(1000))), 1000));
       }},
      {"noise.flac", [] { return flacWith("") + repeated(noise(kMiB), 32); }},
      {"distinctComments.ogg",
       [] { return oggVorbisWith(vorbisComments(100'000, distinctVorbisComments(100'000))); }},
      {"hugeCommentCount.ogg", [] { return oggVorbisWith(vorbisComments(0x80000000, "")); }},
      {"pictureComments.ogg",
       [] { return oggVorbisWith(pictureComments(kMostStreams, hugePng())); }},
      {"pictureComments.opus", [] { return opusWith(pictureComments(kMostStreams, hugePng())); }},
      {"largePictureComment.opus", [] { return opusWith(pictureComments(1, noise(32 * kMiB))); }},
      {"chapterComments.ogg", [] { return oggVorbisWith(chapterComments()); }},
      {"manySerials.ogg", manySerials},
      {"chains.ogg", chains},
      {"endlessPacket.ogg", endlessPacket},
      {"emptyPages.ogg", emptyPages},
      {"codeBooks.ogg", codeBooks},
      {"hugePicture.ogv", hugeTheora},
      {"inflatingFrames.dsf", inflatingDsf},
      {"inflatingObjects.dsf",
       [] { return dsfFile(dsdWithTag(id3v2TagOf(inflatingFrames("APIC")))); }},
      {"distinctTexts.dsf", [] { return dsfFile(dsdWithTag(id3v2TagOf(distinctTexts("TXXX")))); }},
      {"manyCovers.dsf", [] { return dsfFile(dsdWithTag(id3v2TagOf(covers(100'000, "x")))); }},
      {"hugeCovers.dsf",
       [] { return dsfFile(dsdWithTag(id3v2TagOf(covers(kMostStreams, hugePng())))); }},
      {"inflatingFrames.dff",
       [] { return dffFile(dsdWithTag(id3v2TagOf(inflatingFrames("TXXX")))); }},
      {"chunks.dff", dffOfChunks},
      {"nested.dff", nestedDff},
      {"distinctInfo.wav", [] { return wavWithInfo(distinctRiffChunks(100'000)); }},
      {"emptyLists.wav",
       [] { return wavWith(wavFormat() + repeated(riffList("LIST", "INFO", ""), 1'000'000)); }},
      {"hugeList.wav",
       [] { return hugeChunk("LIST", 0xFFFFFFF0) + "INFO" + "INAM" + little32(0xFFFFFFF0); },
       std::int64_t{1} << 40},
      {"hugeExtension.wav", [] { return hugeChunk("bext", 0x7FFFFFF0) + noise(kMiB); },
       std::int64_t{1} << 33},
      {"hugeFormat.wav",
       [] { return "RIFF" + little32(0xFFFFFFFF) + "WAVEfmt " + little32(0x7FFFFFF0) + zeros(64); },
       std::int64_t{1} << 33},
      {"inflatingFrames.wav",
       [] {
         return wavWith(wavFormat() + riffChunk("id3 ", id3v2TagOf(inflatingFrames("TXXX"))) +
                        riffChunk("data", zeros(4096)));
       }},
      {"noise.wav", [] { return hugeChunk("data", 0xFFFFFFF0) + repeated(noise(kMiB), 32); }},
      {"hugeText.aiff", [] { return "FORM" + big32(0x7FFFFFFF) + "AIFFNAME" + big32(0x7FFFFFF0); },
       std::int64_t{1} << 33},
      {"inflatingFrames.aiff",
       [] { return aiffWith(iffChunk("ID3 ", id3v2TagOf(inflatingFrames("TXXX")))); }},
      {"chunks.aiff", [] { return aiffWith(repeated(iffChunk("ANNO", "v"), 1'000'000)); }},
      {"hugeSeekTable.ape", monkeysAudio},
      {"hugeSeekTableInHole.ape", monkeysAudio, std::int64_t{1} << 30},
      {"hugeFrameCount.tta", [] { return trueAudio(1, 0x0FFFFFF0); }},
      {"hugeFrameCountInHole.tta", [] { return trueAudio(1, 0x0FFFFFF0); }, std::int64_t{1} << 33},
      {"blocks.wv", wavPack},
      {"hugeFrameCount.mpc", musepack7},
      {"hugePacketTable.caf", coreAudio},
      {"hugeText.au", auWithText},
      {"frames.amr", amr},
  };
}

}  // namespace kolum::test
