#include "support/dsd_builder.h"

#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

constexpr std::uint32_t kBlockSize = 4096;

std::string encoded(const TextFrame& frame) {
  if (frame.encoding == TextEncoding::kLatin1 || frame.encoding == TextEncoding::kUtf8)
    return frame.text;
  const bool isBigEndian = frame.encoding == TextEncoding::kUtf16BigEndian;
  std::string text = isBigEndian ? "" : "\xFF\xFE";
  for (const char c : frame.text) text += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  return text;
}

// The size of a frame's content, followed by the flags if the version has them.
std::string frameSize(std::size_t size, int version) {
  if (version == 2) return bigEndian(size, 3);
  return (version == 3 ? bigEndian(size, 4) : synchSafe(size)) + std::string(2, '\0');
}

// A DFF chunk, padded to an even size.
std::string chunk(const std::string& id, const std::string& payload) {
  return id + bigEndian(payload.size(), 8) + payload + std::string(payload.size() % 2, '\0');
}

// "DIAR" or "DITI": a text with its length.
std::string countedText(const std::string& id, const std::string& text) {
  return text.empty() ? "" : chunk(id, bigEndian(text.size(), 4) + text);
}

std::uint64_t bytesPerChannel(const DsdFile& file) {
  const std::uint64_t bytes = std::uint64_t{file.sampleRate} * file.seconds / 8;
  return (bytes + kBlockSize - 1) / kBlockSize * kBlockSize;
}

}  // namespace

std::string synchSafe(std::size_t value) {
  std::string bytes;
  for (int shift = 21; shift >= 0; shift -= 7) bytes += static_cast<char>(value >> shift & 0x7F);
  return bytes;
}

std::string id3v2Tag(const std::vector<TextFrame>& frames, int version) {
  std::string body;
  for (const TextFrame& frame : frames) {
    const std::string content = static_cast<char>(frame.encoding) + encoded(frame);
    body += frame.id + frameSize(content.size(), version) + content;
  }
  return id3v2TagOf(body, version);
}

std::string id3v2TagOf(const std::string& frames, int version) {
  return "ID3" + std::string{static_cast<char>(version), '\0', '\0'} + synchSafe(frames.size()) +
         frames;
}

std::string dsfFile(const DsdFile& file) {
  const std::string data(bytesPerChannel(file) * file.channels, '\x69');
  const std::string format = "fmt " + littleEndian(52, 8) + littleEndian(1, 4) +
                             littleEndian(0, 4) + littleEndian(file.channels == 1 ? 1 : 2, 4) +
                             littleEndian(file.channels, 4) + littleEndian(file.sampleRate, 4) +
                             littleEndian(1, 4) +
                             littleEndian(std::uint64_t{file.sampleRate} * file.seconds, 8) +
                             littleEndian(kBlockSize, 4) + littleEndian(0, 4);
  const std::string audio = "data" + littleEndian(12 + data.size(), 8) + data;
  const std::uint64_t end = 28 + format.size() + audio.size();
  const std::uint64_t tagOffset = file.tagOffset.value_or(file.tag.empty() ? 0 : end);
  return "DSD " + littleEndian(28, 8) + littleEndian(end + file.tag.size(), 8) +
         littleEndian(tagOffset, 8) + format + audio + file.tag;
}

std::string dffFile(const DsdFile& file, const std::string& artist, const std::string& title) {
  const std::string channelNames = file.channels == 1 ? "C   " : "SLFTSRGT";
  const std::string properties = "SND " + chunk("FS  ", bigEndian(file.sampleRate, 4)) +
                                 chunk("CHNL", bigEndian(file.channels, 2) + channelNames) +
                                 chunk("CMPR", "DSD " + std::string("\x0Enot compressed", 15));
  const std::string audio(bytesPerChannel(file) * file.channels, '\x69');
  const std::string texts = countedText("DIAR", artist) + countedText("DITI", title);
  std::string content = "DSD " + chunk("FVER", bigEndian(0x01050000, 4)) +
                        chunk("PROP", properties) + chunk("DSD ", audio);
  if (!texts.empty()) content += chunk("DIIN", texts);
  if (!file.tag.empty()) content += chunk("ID3 ", file.tag);
  return chunk("FRM8", content);
}

}  // namespace kolum::test
