#include "read/tags/song_tags.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "base/utf8.h"
#include "support/dsd_builder.h"
#include "support/hostile_bytes.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::media::SongTags;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Found {
  std::optional<SongTags> tags;
  std::uint64_t bytesRead = 0;
};

Found readFile(const std::string& path) {
  const auto source = kolum::media::Source::open(path);
  if (!source) return {};
  Found found;
  found.tags = kolum::tags::readSongTags(*source);
  found.bytesRead = source->bytesRead();
  return found;
}

std::optional<SongTags> tagsOf(const std::string& content) {
  const TempDir folder;
  return readFile(folder.write("song", content)).tags;
}

std::string sound() {
  return repeated("\xFF\xFB\x90\x64" + zeros(413), 20);
}

std::string frame(const std::string& id, const std::string& content, std::uint32_t flags = 0) {
  return id + synchSafe(content.size()) + big16(flags) + content;
}

std::string nul(const std::string& text) {
  return text + '\0';
}

std::string mp3With(const std::string& frames, int version = 4) {
  return id3v2TagOf(frames, version) + sound();
}

std::string padded(const std::string& text, std::size_t size) {
  return text + zeros(size - text.size());
}

std::string id3v1(const std::string& title, const std::string& comment = "", char genre = '\xFF') {
  return "TAG" + padded(title, 30) + padded("Artist", 30) + padded("Album", 30) + "1999" +
         padded(comment, 30) + genre;
}

std::string apeItem(const std::string& key, const std::string& value, std::uint32_t flags = 0) {
  return little32(value.size()) + little32(flags) + nul(key) + value;
}

std::string apeTag(const std::string& items) {
  const std::string numbers = little32(2000) + little32(items.size() + 32) + little32(1);
  return "APETAGEX" + numbers + little32(0xA0000000) + zeros(8) + items + "APETAGEX" + numbers +
         little32(0x80000000) + zeros(8);
}

// --- ID3v2

TEST(Id3v2Tags, OfVersion2HaveShortNames) {
  const auto shortFrame = [](const std::string& id, const std::string& content) {
    return id + bigEndian(content.size(), 3) + content;
  };
  const std::string frames =
      shortFrame("TT2", nul(zeros(1) + "Title")) + shortFrame("TP1", zeros(1) + "Artist") +
      shortFrame("TRK", zeros(1) + "3/12") + shortFrame("TXX", nul(zeros(1) + "BARCODE") + "123") +
      shortFrame("COM", nul(zeros(1) + "eng") + "Comment") +
      shortFrame("ULT", nul(zeros(1) + "deu") + "La") +
      shortFrame("PIC", zeros(1) + "JPG\3" + nul("d") + "\xFF\xD8\xFF...");
  const auto tags = tagsOf(mp3With(frames, 2));
  ASSERT_TRUE(tags);
  EXPECT_EQ(tags->title, "Title");
  EXPECT_THAT(tags->artists, ElementsAre("Artist"));
  EXPECT_EQ(tags->trackTotal, 12);
  EXPECT_EQ(tags->barcode, "123");
  EXPECT_THAT(tags->comments, ElementsAre("Comment"));
  EXPECT_EQ(tags->lyricsLanguage, "deu");
  ASSERT_EQ(tags->covers.size(), 1U);
  EXPECT_EQ(tags->covers[0].mimeType, "image/jpeg");
  EXPECT_EQ(tags->covers[0].description, "d");
  EXPECT_EQ(tags->covers[0].bytes, 6U);
}

TEST(Id3v2Tags, OfVersion3HaveDatesInParts) {
  const std::string year = frame("TYER", zeros(1) + "1999");
  const std::string day = frame("TDAT", zeros(1) + "3112");
  const std::string time = frame("TIME", zeros(1) + "2359");
  EXPECT_EQ(tagsOf(mp3With(year, 3))->date, "1999");
  EXPECT_EQ(tagsOf(mp3With(day + year, 3))->date, "1999-12-31");
  EXPECT_EQ(tagsOf(mp3With(time + day + year, 3))->date, "1999-12-31T23:59");
  EXPECT_EQ(tagsOf(mp3With(time + year, 3))->date, "1999");
  EXPECT_FALSE(tagsOf(mp3With(time + day, 3)));
}

TEST(Id3v2Tags, HaveTextsInEveryEncoding) {
  const auto titleOf = [](const std::string& content) {
    const auto tags = tagsOf(mp3With(frame("TIT2", content)));
    return tags ? tags->title : "";
  };
  EXPECT_EQ(titleOf(zeros(1) + "Caf\xE9"), "Caf\u00E9");
  EXPECT_EQ(titleOf("\1\xFF\xFE" + std::string("C\0\xE9\0", 4)), "C\u00E9");
  EXPECT_EQ(titleOf("\1\xFE\xFF" + std::string("\0C\0\xE9", 4)), "C\u00E9");
  EXPECT_EQ(titleOf("\2" + std::string("\0C\0\xE9", 4)), "C\u00E9");
  EXPECT_EQ(titleOf("\3Caf\xC3\xA9"), "Caf\u00E9");
  // What is UTF-8 under the name of Latin-1, and Windows-1252.
  EXPECT_EQ(titleOf(zeros(1) + "Caf\xC3\xA9"), "Caf\u00E9");
  EXPECT_EQ(titleOf(zeros(1) + "\x93quoted\x94"), "\u201Cquoted\u201D");
  // Encodings that do not exist, and half of a pair of surrogates.
  EXPECT_THAT(titleOf("\x04Title"), IsEmpty());
  EXPECT_THAT(titleOf("\x2FTitle"), IsEmpty());
  EXPECT_THAT(titleOf("\3"), IsEmpty());
  EXPECT_TRUE(kolum::isUtf8(titleOf("\1\xFF\xFE" + std::string("a\0\x3D\xD8", 4))));
}

TEST(Id3v2Tags, WithUnknownEncodingsAreLeftOut) {
  for (const char* id : {"TIT2", "TXXX", "COMM", "APIC", "TIPL", "TYER"})
    EXPECT_FALSE(tagsOf(mp3With(frame(id,
                                      "\x2F"
                                      "eng" +
                                          zeros(2) + "text" + zeros(4)))))
        << id;
}

TEST(Id3v2Tags, MayBeUnsynchronized) {
  // In version 3 the whole tag, in version 4 a frame.
  const std::string text = "\1\xFF\xFE" + std::string("T\0\xFF\0", 4);
  const std::string stuffed = "\1\xFF" + zeros(1) + "\xFE" + std::string("T\0\xFF\0\0", 5);
  const std::string frames =
      "TIT2" + big32(text.size()) + zeros(2) + stuffed + frame("TALB", "\3L");
  EXPECT_EQ(tagsOf("ID3\3" + zeros(1) + "\x80" + synchSafe(frames.size()) + frames)->title,
            "T\u00FF");
  EXPECT_EQ(tagsOf("ID3\3" + zeros(1) + "\x80" + synchSafe(frames.size()) + frames)->album, "L");
  const std::string inFrame = frame("TIT2", synchSafe(text.size()) + stuffed, 3);
  EXPECT_EQ(tagsOf(mp3With(inFrame + frame("TALB", "\3L")))->title, "T\u00FF");
  EXPECT_EQ(tagsOf(mp3With(inFrame + frame("TALB", "\3L")))->album, "L");
}

TEST(Id3v2Tags, MayHaveExtendedHeaders) {
  const std::string title = frame("TIT2", "\3Title");
  const auto tag = [](char version, const std::string& body) {
    return std::string("ID3") + version + '\0' + '\x40' + synchSafe(body.size()) + body;
  };
  EXPECT_EQ(tagsOf(tag(3, big32(6) + zeros(6) + title))->title, "Title");
  EXPECT_EQ(tagsOf(tag(4, synchSafe(6) + "\1" + zeros(1) + title))->title, "Title");
  EXPECT_FALSE(tagsOf(tag(3, big32(0xFFFFFFFF) + title)));
  EXPECT_FALSE(tagsOf(tag(4, synchSafe(0xFFFFFFF) + title)));
}

// iTunes wrote version 4 with the sizes of version 3.
TEST(Id3v2Tags, OfVersion4MayHavePlainSizes) {
  const std::string text = "\3" + std::string(299, 'a');
  const std::string frames = "TIT2" + big32(text.size()) + zeros(2) + text + frame("TALB", "\3L");
  const auto tags = tagsOf(mp3With(frames));
  EXPECT_EQ(tags->title.size(), 299U);
  EXPECT_EQ(tags->album, "L");
}

TEST(Id3v2Tags, LeaveOutEncryptedAndCompressedFrames) {
  constexpr std::uint32_t kCompressed = 0x09;
  constexpr std::uint32_t kEncrypted = 0x04;
  const std::string packed = synchSafe(2) + deflated("\3T");
  EXPECT_FALSE(tagsOf(mp3With(frame("TIT2", packed, kCompressed))));
  EXPECT_FALSE(tagsOf(mp3With(frame("TIT2", "\3T", kEncrypted))));
  EXPECT_EQ(tagsOf(mp3With(frame("TIT2", "\3T", kEncrypted) + frame("TALB", "\3L")))->album, "L");
}

TEST(Id3v2Tags, PreferCommentsWithoutDescription) {
  const auto comment = [](const std::string& description, const std::string& text) {
    return frame("COMM", "\3eng" + nul(description) + text);
  };
  EXPECT_THAT(tagsOf(mp3With(comment("d", "1") + comment("", "2") + comment("", "3")))->comments,
              ElementsAre("2", "3"));
  EXPECT_THAT(tagsOf(mp3With(comment("d", "1") + comment("e", "2")))->comments, ElementsAre("1"));
  EXPECT_FALSE(tagsOf(mp3With(comment("iTunSMPB", "1"))));
  EXPECT_EQ(tagsOf(mp3With(comment("iTunPGAP", "1")))->isGapless, true);
}

TEST(Id3v2Tags, HaveVolumes) {
  const auto volume = [](const std::string& name, int steps) {
    return frame("RVA2", nul(name) + "\1" + bigEndian(static_cast<std::uint16_t>(steps), 2) +
                             "\x10" + std::string("\x40\0", 2));
  };
  const auto gain = tagsOf(mp3With(volume("track", -1024) + volume("album", 512)))->replayGain;
  EXPECT_EQ(gain.trackGain, -2);
  EXPECT_EQ(gain.albumGain, 1);
  EXPECT_EQ(gain.trackPeak, 0.5);
  const std::string named = frame("TXXX", "\3" + nul("REPLAYGAIN_TRACK_GAIN") + "-7.5 dB");
  EXPECT_EQ(tagsOf(mp3With(volume("track", -1024) + named))->replayGain.trackGain, -7.5);
}

TEST(Id3v2Tags, LeaveOutChannelsAndTypesThatDoNotExist) {
  const std::string volumes = frame("RVA2", nul("track") + "\x63" + zeros(2) + "\x10" + zeros(2) +
                                                "\1" + big16(512) + zeros(1) + "\1" + zeros(1));
  EXPECT_EQ(tagsOf(mp3With(volumes))->replayGain.trackGain, 1);
  const std::string picture = "\3" + nul("image/png") + "\xC8" + nul("") + "\x89PNG";
  EXPECT_THAT(tagsOf(mp3With(frame("APIC", picture)))->covers[0].type, IsEmpty());
}

TEST(Id3v2Tags, HaveChaptersWithTitles) {
  const auto chapter = [](const std::string& id, std::uint32_t start, std::uint32_t end,
                          const std::string& frames) {
    return frame("CHAP", nul(id) + big32(start) + big32(end) + repeated("\xFF", 8) + frames);
  };
  const auto tags = tagsOf(mp3With(
      chapter("b", 1500, 0xFFFFFFFF, frame("TALB", "\3L") + frame("TIT2", "\3Two")) +
      chapter("a", 0, 1500, "") + chapter("c", 0xFFFFFFFF, 0xFFFFFFFF, "") + frame("CHAP", "x")));
  ASSERT_EQ(tags->chapters.size(), 2U);
  EXPECT_EQ(tags->chapters[0].end, 1.5);
  EXPECT_EQ(tags->chapters[1].start, 1.5);
  EXPECT_FALSE(tags->chapters[1].end);
  EXPECT_EQ(tags->chapters[1].title, "Two");
  EXPECT_THAT(tags->title, IsEmpty());
}

TEST(Id3v2Tags, HaveTheSizeOfCoversThatAreNotRead) {
  const std::string cover = "\3image/png" + std::string("\0\3", 2) + nul("d");
  const TempDir folder;
  const std::string content =
      mp3With(frame("TIT2", "\3T") + frame("APIC", cover + noise(3 * kMiB)) + frame("TALB", "\3L"));
  const Found found = readFile(folder.write("song", content));
  EXPECT_EQ(found.tags->covers[0].bytes, 3 * kMiB);
  EXPECT_EQ(found.tags->album, "L");
  EXPECT_LT(found.bytesRead, 128 * kKiB);
}

TEST(Id3v2Tags, MayLieAboutSizes) {
  EXPECT_FALSE(tagsOf("ID3\4" + zeros(2) + "\x7F\x7F\x7F\x7F" + "TIT2\x7F\x7F\x7F\x7F" + zeros(2)));
  EXPECT_FALSE(tagsOf("ID3\4" + zeros(6)));
  EXPECT_FALSE(tagsOf("ID3\4" + zeros(2) + synchSafe(4) + "TIT2"));
  EXPECT_FALSE(tagsOf("ID3\x09" + zeros(2) + synchSafe(100) + frame("TIT2", "\3T")));
  EXPECT_FALSE(tagsOf("ID3"));
}

// --- Behind the sound

TEST(Id3v1Tags, HaveGenresTracksAndAnyEncoding) {
  const auto tags = tagsOf(sound() + id3v1("Caf\xE9", padded("Comment", 29) + "\7", 17));
  EXPECT_EQ(tags->title, "Caf\u00E9");
  EXPECT_THAT(tags->artists, ElementsAre("Artist"));
  EXPECT_EQ(tags->date, "1999");
  EXPECT_THAT(tags->comments, ElementsAre("Comment"));
  EXPECT_EQ(tags->track, 7);
  EXPECT_THAT(tags->genres, ElementsAre("Rock"));
  EXPECT_EQ(tagsOf(sound() + id3v1("Caf\xC3\xA9"))->title, "Caf\u00E9");
  EXPECT_EQ(tagsOf(sound() + id3v1("Title   "))->title, "Title");
  EXPECT_THAT(tagsOf(sound() + id3v1("T"))->genres, IsEmpty());
}

TEST(ApeTags, AreFoundWithAndWithoutId3v1) {
  const std::string tag =
      apeTag(apeItem("Title", "Ape") + apeItem("ARTIST", std::string("A\0B", 3)));
  EXPECT_EQ(tagsOf(sound() + tag)->title, "Ape");
  const auto both = tagsOf(sound() + tag + id3v1("Id3"));
  EXPECT_EQ(both->title, "Ape");
  EXPECT_THAT(both->artists, ElementsAre("A", "B"));
  EXPECT_EQ(both->album, "Album");
  EXPECT_EQ(tagsOf(mp3With(frame("TIT2", "\3Id3")) + tag)->title, "Id3");
}

TEST(ApeTags, HaveCovers) {
  const auto tags =
      tagsOf(sound() + apeTag(apeItem("Cover Art (Back)", nul("b.png") + "\x89PNG", 2) +
                              apeItem("Cover Art (Front)", "no name", 2)));
  ASSERT_EQ(tags->covers.size(), 1U);
  EXPECT_EQ(tags->covers[0].type, "back cover");
  EXPECT_EQ(tags->covers[0].description, "b.png");
  EXPECT_EQ(tags->covers[0].bytes, 4U);
}

TEST(ApeTags, MayLieAboutSizes) {
  const auto footer = [](std::uint32_t size) {
    return "APETAGEX" + little32(2000) + little32(size) + little32(1) + little32(0x80000000) +
           zeros(8);
  };
  for (const std::uint32_t size : {0U, 31U, 0x7FFFFFFFU, 0xFFFFFFFFU})
    EXPECT_FALSE(tagsOf("MAC " + zeros(100) + footer(size))) << size;
  const std::string item = little32(0xFFFFFFFF) + zeros(4) + nul("Title") + "T";
  EXPECT_FALSE(tagsOf("MAC " + item + footer(static_cast<std::uint32_t>(item.size() + 32))));
}

// --- Chunks

std::string wave(const std::string& chunks, const std::string& magic = "RIFF") {
  const std::string format = riffChunk("fmt ", little16(1) + little16(2) + little32(44100) +
                                                   little32(176400) + little16(4) + little16(16));
  return magic + little32(0xFFFFFFFF) + "WAVE" + format + chunks;
}

TEST(WaveTags, AreInListsAndInId3v2) {
  const std::string info = riffList(
      "LIST", "INFO",
      riffChunk("INAM", nul("Caf\xE9") + "x") + riffChunk("ITRK", "3") + riffChunk("ICRD", "1999"));
  const auto plain = tagsOf(wave(riffChunk("data", zeros(4095)) + info));
  EXPECT_EQ(plain->title, "Caf\u00E9");
  EXPECT_EQ(plain->track, 3);
  EXPECT_EQ(plain->date, "1999");
  const auto both = tagsOf(wave(info + riffChunk("data", zeros(99)) +
                                riffChunk("id3 ", id3v2TagOf(frame("TIT2", "\3Id3")))));
  EXPECT_EQ(both->title, "Id3");
  EXPECT_EQ(both->track, 3);
}

TEST(WaveTags, AreFoundBehindSoundOfManyGigabytes) {
  const std::string info = riffList("LIST", "INFO", riffChunk("INAM", "Title"));
  const std::string sizes = riffChunk("ds64", little64(0) + little64(100) + zeros(12));
  const std::string data = "data" + little32(0xFFFFFFFF) + zeros(100);
  EXPECT_EQ(tagsOf(wave(sizes + data + info, "RF64"))->title, "Title");
}

TEST(AiffTags, AreInChunksAndInId3v2) {
  const std::string texts = iffChunk("NAME", "Title") + iffChunk("AUTH", "Artist") +
                            iffChunk("(c) ", "1999") + iffChunk("ANNO", "Comment");
  const std::string id3 = iffChunk("ID3 ", id3v2TagOf(frame("TIT2", "\3Id3")));
  const auto tags =
      tagsOf("FORM" + big32(1000) + "AIFC" + texts + iffChunk("SSND", zeros(9)) + zeros(1));
  EXPECT_EQ(tags->title, "Title");
  EXPECT_THAT(tags->artists, ElementsAre("Artist"));
  EXPECT_EQ(tags->copyright, "1999");
  EXPECT_EQ(tagsOf("FORM" + big32(1000) + "AIFF" + texts + zeros(1) + id3)->copyright, "1999");
}

TEST(DsdTags, AreReadFromBothFormats) {
  const DsdFile file = {.seconds = 1, .tag = id3v2Tag({{.id = "TIT2", .text = "Title"}})};
  EXPECT_EQ(tagsOf(dsfFile(file))->title, "Title");
  EXPECT_EQ(tagsOf(dffFile(file))->title, "Title");
  const auto plain = tagsOf(dffFile({.seconds = 1}, "Artist", "Title"));
  EXPECT_EQ(plain->title, "Title");
  EXPECT_THAT(plain->artists, ElementsAre("Artist"));
  EXPECT_FALSE(tagsOf(dsfFile({.seconds = 1})));
  EXPECT_FALSE(tagsOf(dsfFile({.seconds = 1, .tagOffset = INT64_MAX})));
}

// --- Real files

std::string song(const std::string& name, const std::string& encoder) {
  return media(name,
               "-f lavfi -i sine=duration=1 -metadata title=Title -metadata artist=Artist "
               "-metadata track=3/12 -metadata date=1999-12-31 " +
                   encoder);
}

TEST(SongTags, AreReadFromEveryKindOfSong) {
  struct Song {
    const char* name;
    const char* encoder;
  };
  for (const Song& each :
       {Song{"tagged.mp3", "-c:a libmp3lame"},
        Song{"tagged-3.mp3", "-c:a libmp3lame -id3v2_version 3"}, Song{"tagged.flac", "-c:a flac"},
        Song{"tagged.ogg", "-c:a libvorbis"}, Song{"tagged.opus", "-c:a libopus"},
        Song{"tagged.spx", "-c:a libspeex -ar 16000"}, Song{"tagged-flac.ogg", "-c:a flac"},
        Song{"tagged.m4a", "-c:a aac"}, Song{"tagged-alac.m4a", "-c:a alac"},
        Song{"faststart.m4a", "-c:a aac -movflags faststart"}, Song{"tagged.wma", "-c:a wmav2"},
        Song{"tagged.wv", "-c:a wavpack"}, Song{"tagged.wav", "-c:a pcm_s16le"},
        Song{"tagged.aiff", "-c:a pcm_s16be -write_id3v2 1"},
        Song{"tagged.aac", "-c:a aac -write_id3v2 1"}, Song{"tagged.tta", "-c:a tta"}}) {
    const auto tags = readFile(song(each.name, each.encoder)).tags;
    ASSERT_TRUE(tags) << each.name;
    EXPECT_EQ(tags->title, "Title") << each.name;
    EXPECT_THAT(tags->artists, ElementsAre("Artist")) << each.name;
    EXPECT_EQ(tags->track, 3) << each.name;
    EXPECT_EQ(tags->date.substr(0, 4), "1999") << each.name;
  }
}

TEST(SongTags, DependOnContentOnly) {
  const TempDir folder;
  const std::string content = contentOf(song("tagged.flac", "-c:a flac"));
  for (const char* name : {"a.mp3", "a.m4a", "a.wma", "a"})
    EXPECT_EQ(readFile(folder.write(name, content)).tags->title, "Title") << name;
}

TEST(SongTags, AreReadFromFlacBehindId3v2) {
  const std::string flac = contentOf(song("tagged.flac", "-c:a flac"));
  const auto tags = tagsOf(id3v2TagOf(frame("TIT2", "\3Id3") + frame("TALB", "\3L")) + flac);
  EXPECT_EQ(tags->title, "Title");
  EXPECT_EQ(tags->album, "L");
}

TEST(SongTags, AreNoneWhereThereAreNone) {
  EXPECT_FALSE(tagsOf(""));
  EXPECT_FALSE(tagsOf("TAG"));
  EXPECT_FALSE(tagsOf(sound()));
  EXPECT_FALSE(tagsOf(zeros(1000)));
  EXPECT_FALSE(readFile(media("plain.png", "-f lavfi -i testsrc=size=32x32 -frames:v 1")).tags);
}

TEST(SongTags, OfDamagedFilesDoNoHarm) {
  for (const char* name : {"tagged.mp3", "tagged.flac", "tagged.ogg", "tagged.m4a", "tagged.wma",
                           "tagged.wv", "tagged.wav"}) {
    const std::string content = contentOf(song(name, ""));
    const TempDir folder;
    for (std::size_t size = 0; size < std::min<std::size_t>(content.size(), 3000); size += 43)
      readFile(folder.write("cut", content.substr(0, size)));
    for (std::size_t at = 0; at < std::min<std::size_t>(content.size(), 3000); at += 31) {
      std::string damaged = content;
      damaged[at] = '\xFF';
      readFile(folder.write("damaged", damaged));
    }
  }
}

// --- What is read

// An hour of sound in the file; what is read is a small part of it.
TEST(SongTags, AreAllThatIsRead) {
  struct Case {
    const char* name;
    std::string before;
    std::string after;
  };
  const std::string title = id3v2TagOf(frame("TIT2", "\3Title"));
  const std::string info = riffList("LIST", "INFO", riffChunk("INAM", "Title"));
  constexpr std::size_t kSound = 100 * kMiB;
  const std::string end = apeTag(apeItem("Title", "Title")) + id3v1("Title");
  const std::string items = box("\251nam", box("data", big32(1) + big32(0) + "Title"));
  const std::string movie = box("moov", box("udta", fullBox("meta", 0, 0, box("ilst", items))));
  for (const Case& c :
       {Case{"mp3", title + "\xFF\xFB\x90\x64", end}, Case{"noise before sound", "no sync", end},
        Case{"wave", wave(info + "data" + little32(kSound)), ""},
        Case{"wave with a list behind", wave("data" + little32(kSound)), info},
        Case{"mp4 with its index behind", ftyp("M4A ") + big32(kSound + 8) + "mdat", movie},
        Case{"mp4 with its index before", ftyp("M4A ") + movie + big32(kSound + 8) + "mdat", ""},
        Case{"flac", "fLaC" + big32(0x81000000 | kSound % 0x1000000), end}}) {
    const TempDir folder;
    const std::string path = folder.write("song", c.before);
    std::filesystem::resize_file(path, c.before.size() + kSound);
    std::ofstream(path, std::ios::app | std::ios::binary) << c.after;
    const Found found = readFile(path);
    EXPECT_LE(found.bytesRead, 64 * kKiB + c.before.size() + c.after.size()) << c.name;
    EXPECT_TRUE(found.tags && found.tags->title == "Title") << c.name;
  }
}

TEST(SongTags, AreAllThatIsReadOfRealSongs) {
  for (const char* name : {"long.mp3", "long.flac", "long.ogg", "long.opus", "long.m4a", "long.wma",
                           "long.wv", "long.wav"}) {
    const std::string path = media(name, "-f lavfi -i anoisesrc=duration=60 -metadata title=Title");
    const Found found = readFile(path);
    EXPECT_LE(found.bytesRead, 64 * kKiB) << name;
    EXPECT_EQ(found.tags->title, "Title") << name;
  }
}

}  // namespace
