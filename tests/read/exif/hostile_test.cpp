// Photos whose tags are made to harm their reader.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <random>

#include "read/exif/reading.h"
#include "support/exif_builder.h"
#include "support/hostile_bytes.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"
#include "support/processor_time.h"

namespace kolum::test {

namespace {

struct Hostile {
  const char* name;
  std::string (*content)();
};

void PrintTo(const Hostile& file, std::ostream* out) {
  *out << file.name;
}

// --- Exif

std::string entry(unsigned tag, unsigned type, std::uint32_t count, std::uint32_t value) {
  return little16(tag) + little16(type) + little32(count) + little32(value);
}

std::string tiffOf(const std::vector<std::string>& entries, std::uint32_t next,
                   std::uint64_t count = 0) {
  std::string file =
      std::string("II*\0", 4) + little32(8) + little16(count == 0 ? entries.size() : count);
  for (const std::string& text : entries) file += text;
  return file + little32(next);
}

std::string inJpeg(const std::string& tiff) {
  return jpegPhoto({.exif = tiff});
}

std::string directoryAfterItself() {
  return inJpeg(tiffOf({entry(0x0112, 3, 1, 1)}, 8));
}

std::string directoryBelowItself() {
  return inJpeg(
      tiffOf({entry(0x8769, 4, 1, 8), entry(0x8825, 4, 1, 8), entry(0x014A, 4, 1, 8)}, 0));
}

std::string countsThatLie() {
  return inJpeg(tiffOf({entry(0x010F, 2, UINT32_MAX, 26), entry(0x0110, 2, 0x7FFFFFFF, 26),
                        entry(0x8298, 12, UINT32_MAX, 26), entry(0x927C, 7, UINT32_MAX, 26)},
                       0));
}

std::string offsetsBeyondTheEnd() {
  return inJpeg(tiffOf({entry(0x010F, 2, 100, UINT32_MAX), entry(0x8769, 4, 1, UINT32_MAX),
                        entry(0x014A, 4, 1000, UINT32_MAX - 8), entry(0x8825, 4, 1, 0x7FFFFFFF)},
                       UINT32_MAX));
}

std::string manyEntries() {
  return tiffOf(std::vector<std::string>(65535, entry(0x010E, 2, 4, 0x41414141)), 0);
}

// Each names the next: 100,000 directories.
std::string manyDirectories() {
  std::string file = std::string("II*\0", 4) + little32(8);
  for (std::uint32_t i = 1; i <= 100'000; ++i)
    file += little16(1) + entry(0x0112, 3, 1, 1) + little32(8 + i * 18);
  return file;
}

// 200 values of 64 KiB, all of the same bytes.
std::string valuesThatOverlap() {
  std::vector<std::string> entries;
  for (unsigned i = 0; i < 200; ++i) entries.push_back(entry(0xF000 + i, 1, 65536, 3000));
  return tiffOf(entries, 0) + noise(100'000);
}

std::string hugeNotes() {
  return tiffOf({entry(0x8769, 4, 1, 26)}, 0) + little16(1) +
         entry(0x927C, 7, 4 * 1024 * 1024, 44) + little32(0) +
         std::string("Nikon\0\2\x10\0\0", 10) + noise(5 * kMiB);
}

// What each maker's notes begin with, and then noise.
std::string notesOfNoise() {
  std::string all;
  for (const std::string& header :
       {std::string("Nikon\0\2\x10\0\0II*\0\x08\0\0\0", 18), std::string("OLYMPUS\0II\3\0", 12),
        std::string("SONY DSC \0\0\0", 12), std::string("FUJIFILM\x0C\0\0\0", 12),
        std::string("AOC\0MM", 6), std::string("Panasonic\0\0\0", 12),
        std::string("Apple iOS\0\0\1MM\xFF\xFF", 16), std::string("SIGMA\0\0\0\1\0", 10)}) {
    const ExifDirectory exif = {exifBytes(0x927C, header + noise(2000))};
    all = jpegPhoto({.exif = exifStructure({photoDirectory(
                         {exifText(0x010F, "Canon"), exifText(0x0110, "A")}, exif)})});
    EXPECT_TRUE(tagsOf(all));
  }
  return all;
}

std::string sizesOfDirectories() {
  return exifStructure(
      {{exifLong(0x0100, 4294967295), exifLong(0x0101, 4294967295), exifLong(0x00FE, 0)}});
}

// --- XMP

std::string inTiff(const std::string& xmp) {
  return exifStructure({{exifBytes(0x02BC, xmp)}});
}

std::string manyKeywords() {
  std::vector<std::string> words;
  for (int i = 0; i < 4000; ++i) words.push_back(std::to_string(i));
  return inTiff(xmpDocument(xmpList("dc:subject", "Bag", words)));
}

std::string tooManyKeywords() {
  std::vector<std::string> words;
  for (int i = 0; i < 100'000; ++i) words.push_back(std::to_string(i));
  return inTiff(xmpDocument(xmpList("dc:subject", "Bag", words)));
}

std::string repeatedElement(int count, const std::string& begin, const std::string& end) {
  std::string text;
  for (int i = 0; i < count; ++i) text += begin;
  for (int i = 0; i < count; ++i) text += end;
  return text;
}

std::string deepXmp() {
  return inTiff(
      xmpDocument(repeatedElement(100'000, "<dc:title rdf:parseType='Resource'>", "</dc:title>")));
}

// In a JPEG, where the document is small.
std::string deepXmpOfJpeg() {
  return jpegPhoto({.xmp = xmpDocument(repeatedElement(8000, "<a>", "</a>"))});
}

// In Exif inside a JPEG, which Exiv2 would parse by itself.
std::string deepXmpInExif() {
  return inJpeg(inTiff(xmpDocument(repeatedElement(8000, "<a>", "</a>"))));
}

std::string entities() {
  std::string text = "<!DOCTYPE a [<!ENTITY e0 'aaaaaaaaaa'>";
  for (int i = 1; i < 20; ++i) {
    const std::string before = "&e" + std::to_string(i - 1) + ";";
    text += "<!ENTITY e" + std::to_string(i) + " '" + before + before + before + before + "'>";
  }
  return inTiff(text + "]>" + xmpDocument("<xmp:Label>&e19;</xmp:Label>"));
}

std::string manyNamespaces() {
  std::string text;
  for (int i = 0; i < 2000; ++i) {
    const std::string n = std::to_string(i);
    text += "<p" + n + ":a xmlns:p" + n + "='http://x/" + n + "/'>x</p" + n + ":a>";
  }
  return inTiff(xmpDocument(text));
}

std::string longTexts() {
  const std::string text(500'000, 'x');
  std::string all;
  for (const char* name : {"photoshop:City", "photoshop:State", "photoshop:Country", "xmp:Label",
                           "photoshop:Credit", "photoshop:Headline"})
    all += std::string("<") + name + ">" + text + "</" + name + ">";
  return inTiff(xmpDocument(all));
}

std::string manyRegions() {
  std::string regions;
  for (int i = 0; i < 1000; ++i)
    regions += "<rdf:li rdf:parseType='Resource'><mwg-rs:Name>a</mwg-rs:Name></rdf:li>";
  return inTiff(
      xmpDocument("<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>" +
                  regions + "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>"));
}

std::string unusualXmp() {
  return jpegPhoto(
      {.xmp = xmpDocument("<dc:subject>no list</dc:subject><dc:title><rdf:Seq/></dc:title>"
                          "<xmp:Rating><rdf:Bag><rdf:li>5</rdf:li></rdf:Bag></xmp:Rating>"
                          "<dc:creator rdf:parseType='Resource'><dc:x>a</dc:x></dc:creator>")});
}

// In one element, and each in the same namespace with a long name.
std::string manyAttributes() {
  std::string text = "<dc:title xmlns:a='" + std::string(2 * kMiB, 'x') + "'";
  for (int i = 0; i < 150'000; ++i)
    text += " a:" + std::to_string(i + 100'000).replace(0, 1, "b") + "=''";
  return inTiff(xmpDocument(text + "/>"));
}

std::string manyElements() {
  std::string text = "<a:b xmlns:a='" + std::string(kMiB, 'x') + "'>";
  for (int i = 0; i < 150'000; ++i) text += "<a:c" + std::to_string(i) + "/>";
  return inTiff(xmpDocument(text + "</a:b>"));
}

std::string bindings(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += " xmlns:n" + std::to_string(i) + "='http://x/'";
  return text;
}

std::string manyNamespacesAtOnce() {
  return inTiff(xmpDocument("<a" + bindings(100'000) + "/>"));
}

// Prefixes that are looked up among as many as there may be.
std::string manyLookups() {
  return inTiff("<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'" + bindings(200) +
                "><rdf:Description>" + repeated("<x:a/>", 600'000) +
                "</rdf:Description></rdf:RDF>");
}

std::string manyReferences() {
  return inTiff(xmpDocument("<dc:title>" + repeated("&lt;", 900'000) + "</dc:title>"));
}

// 2000 segments of a whole that would have 4 GiB.
std::string manyParts() {
  const std::string guid(32, 'A');
  std::string segments;
  for (std::size_t i = 0; i < 2000; ++i)
    segments += extendedXmpSegment(guid, UINT32_MAX, i * 60'000, std::string(60'000, 'x'));
  return jpegPhoto(
      {.xmp = xmpDocument("<n:HasExtendedXMP xmlns:n='http://ns.adobe.com/xmp/note/'>" + guid +
                          "</n:HasExtendedXMP>"),
       .segments = segments});
}

// Declarations without a name in the extended XMP.
std::string manyDeclarations() {
  const std::string guid(32, 'A');
  const std::string extended = repeated("xmlns", 800'000) + "'";
  std::string segments;
  for (std::size_t i = 0; i < extended.size(); i += 60'000)
    segments += extendedXmpSegment(guid, extended.size(), i, extended.substr(i, 60'000));
  return jpegPhoto(
      {.xmp = xmpDocument("<n:HasExtendedXMP xmlns:n='http://ns.adobe.com/xmp/note/'>" + guid +
                          "</n:HasExtendedXMP>"),
       .segments = segments});
}

// --- IPTC

std::string manyDatasets() {
  std::vector<std::pair<unsigned, std::string>> datasets;
  for (int i = 0; i < 100'000; ++i) datasets.emplace_back(25, std::to_string(i));
  return exifStructure({{exifBytes(0x83BB, iptcDatasets(datasets))}});
}

std::string datasetsThatLie() {
  return jpegPhoto({.iptc = "\x1C\x02\x19\xFF\xFF" + std::string("abc") +
                            "\x1C\x02\x78\x84\xFF\xFF\xFF\xFF" + "x"});
}

// --- Containers

std::string manySegments() {
  std::string segments;
  for (int i = 0; i < 100'000; ++i) segments += jpegSegment(0xE1, "Exif");
  return jpeg(segments + jpegFrame({}));
}

std::string manyProfiles() {
  std::string segments;
  for (int i = 0; i < 200; ++i)
    segments += jpegSegment(0xE2, std::string("ICC_PROFILE\0\1\1", 14) + std::string(65000, 'x'));
  return jpeg(segments + jpegFrame({}));
}

std::string inflatingText() {
  const std::string bomb = deflatedZeros(1024 * kMiB);
  return png({}, pngChunk("iTXt", std::string("XML:com.adobe.xmp\0\1\0\0\0", 22) + bomb) +
                     pngChunk("zTXt", std::string("Raw profile type exif\0\0", 23) + bomb) +
                     pngChunk("iCCP", std::string("p\0\0", 3) + bomb));
}

std::string manyChunks() {
  std::string chunks;
  for (int i = 0; i < 200'000; ++i) chunks += pngChunk("tEXt", "");
  return png({}, chunks);
}

std::string inflatingChunks() {
  const std::string chunk =
      pngChunk("zTXt", std::string("Raw profile type exif\0\0", 23) + deflatedZeros(64 * kMiB));
  return png({}, repeated(chunk, 60));
}

std::string metaBoxWith(const std::string& boxes) {
  return ftyp("heic", {"mif1"}) + fullBox("meta", 0, 0, boxes);
}

std::string itemsThatLie() {
  const std::string items = fullBox(
      "iinf", 0, 0,
      bigEndian(65535, 2) + fullBox("infe", 2, 0, bigEndian(1, 2) + zeros(2) + "Exif" + zeros(1)));
  return metaBoxWith(items + fullBox("iloc", 1, 0,
                                     bigEndian(0x8888, 2) + bigEndian(65535, 2) + bigEndian(1, 2) +
                                         zeros(4) + std::string(8, '\xFF') + bigEndian(1, 2) +
                                         zeros(8) + std::string(16, '\xFF')));
}

// Locations of no bytes: 4096 items with 65535 places each.
std::string placesWithoutBytes() {
  std::string places = zeros(2) + bigEndian(4096, 2);
  for (unsigned i = 0; i < 4096; ++i) places += bigEndian(i, 2) + zeros(2) + bigEndian(65535, 2);
  return metaBoxWith(fullBox("iloc", 0, 0, places));
}

std::string manyAssociations() {
  std::string entries;
  for (int i = 0; i < 4000; ++i) entries += bigEndian(1, 2) + "\xFF" + std::string(255, '\1');
  const std::string items = fullBox(
      "iinf", 0, 0,
      bigEndian(1, 2) + fullBox("infe", 2, 0, bigEndian(1, 2) + zeros(2) + "hvc1" + zeros(1)));
  return metaBoxWith(items + fullBox("pitm", 0, 0, bigEndian(1, 2)) +
                     box("iprp", box("ipco", box("colr", "prof" + noise(2 * kMiB))) +
                                     fullBox("ipma", 0, 0, bigEndian(4000, 4) + entries)));
}

std::string boxesWithoutEnd() {
  return bigEndian(12, 4) + "JXL \r\n\x87\n" + repeated(box("free", ""), 500'000);
}

std::string boxThatEndsBeforeItBegins() {
  return bigEndian(12, 4) + "JXL \r\n\x87\n" + bigEndian(1, 4) + "free" + bigEndian(UINT64_MAX, 8);
}

std::string inflatingBoxes() {
  const std::string bomb = brotliCompressed(zeros(256 * kMiB));
  return bigEndian(12, 4) + "JXL \r\n\x87\n" + box("brob", "Exif" + bomb) +
         box("brob", "xml " + bomb);
}

std::string canonWithoutDirectories() {
  return canonRaw3({}, {exifText(0x9003, "x")}, {}, {}, "x");
}

std::string fujifilmBeyondTheEnd() {
  std::string file = "FUJIFILMCCD-RAW";
  file.resize(84);
  return file + std::string(24, '\xFF');
}

std::string gifBlocksWithoutEnd() {
  return "GIF89a" + zeros(7) + repeated(std::string("!\xFE\1a\0", 5), 300'000);
}

constexpr Hostile kFiles[] = {
    {"directoryAfterItself.jpg", directoryAfterItself},
    {"directoryBelowItself.jpg", directoryBelowItself},
    {"countsThatLie.jpg", countsThatLie},
    {"offsetsBeyondTheEnd.jpg", offsetsBeyondTheEnd},
    {"manyEntries.tif", manyEntries},
    {"manyDirectories.tif", manyDirectories},
    {"valuesThatOverlap.tif", valuesThatOverlap},
    {"hugeNotes.tif", hugeNotes},
    {"notesOfNoise.jpg", notesOfNoise},
    {"sizesOfDirectories.tif", sizesOfDirectories},
    {"manyKeywords.tif", manyKeywords},
    {"tooManyKeywords.tif", tooManyKeywords},
    {"deepXmp.tif", deepXmp},
    {"deepXmpOfJpeg.jpg", deepXmpOfJpeg},
    {"deepXmpInExif.jpg", deepXmpInExif},
    {"entities.tif", entities},
    {"manyNamespaces.tif", manyNamespaces},
    {"manyAttributes.tif", manyAttributes},
    {"manyElements.tif", manyElements},
    {"manyNamespacesAtOnce.tif", manyNamespacesAtOnce},
    {"manyLookups.tif", manyLookups},
    {"manyReferences.tif", manyReferences},
    {"manyParts.jpg", manyParts},
    {"manyDeclarations.jpg", manyDeclarations},
    {"longTexts.tif", longTexts},
    {"manyRegions.tif", manyRegions},
    {"unusualXmp.jpg", unusualXmp},
    {"manyDatasets.tif", manyDatasets},
    {"datasetsThatLie.jpg", datasetsThatLie},
    {"manySegments.jpg", manySegments},
    {"manyProfiles.jpg", manyProfiles},
    {"inflatingText.png", inflatingText},
    {"manyChunks.png", manyChunks},
    {"inflatingChunks.png", inflatingChunks},
    {"itemsThatLie.heic", itemsThatLie},
    {"placesWithoutBytes.heic", placesWithoutBytes},
    {"manyAssociations.heic", manyAssociations},
    {"boxesWithoutEnd.jxl", boxesWithoutEnd},
    {"boxThatEndsBeforeItBegins.jxl", boxThatEndsBeforeItBegins},
    {"inflatingBoxes.jxl", inflatingBoxes},
    {"canonWithoutDirectories.cr3", canonWithoutDirectories},
    {"fujifilmBeyondTheEnd.raf", fujifilmBeyondTheEnd},
    {"gifBlocksWithoutEnd.gif", gifBlocksWithoutEnd},
};

class HostilePhoto : public testing::TestWithParam<Hostile> {};

long peakKilobytes() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  return used.ru_maxrss;
}

TEST_P(HostilePhoto, TakesLittleTimeAndMemory) {
#ifdef KOLUM_SANITIZED
  constexpr std::chrono::seconds kMost{20};
#else
  constexpr std::chrono::seconds kMost{2};
#endif
  constexpr long kGrowth = 160 * 1024;
  const TempDir folder;
  const std::string path = folder.write(GetParam().name, GetParam().content());
  const long before = peakKilobytes();
  const auto begin = test::processorTime();
  tagsOfFile(path);
  EXPECT_LT(test::processorTime() - begin, kMost);
#ifndef KOLUM_SANITIZED_ADDRESS
  EXPECT_LT(peakKilobytes() - before, kGrowth);
#else
  (void)before;
  (void)kGrowth;
#endif
}

std::string testName(const testing::TestParamInfo<Hostile>& row) {
  std::string name = row.param.name;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, HostilePhoto, testing::ValuesIn(kFiles), testName);

TEST(HostilePhotoLists, EndAtTheirLimits) {
  EXPECT_EQ(tagsOf(manyKeywords(), "photo.tif")->keywords.size(), media::kMostPhotoTexts);
  EXPECT_EQ(tagsOf(manyDatasets(), "photo.tif")->keywords.size(), media::kMostPhotoTexts);
  EXPECT_EQ(tagsOf(manyRegions(), "photo.tif")->regions.size(), media::kMostPhotoTexts);
  EXPECT_EQ(tagsOf(longTexts(), "photo.tif")->city.size(), media::kLongestPhotoText);
}

TEST(HostilePhotoDocuments, AreNotParsed) {
  EXPECT_EQ(tagsOf(entities(), "photo.tif")->label, "");
  EXPECT_TRUE(tagsOf(tooManyKeywords(), "photo.tif")->keywords.empty());
}

// With something of everything.
std::string richPhoto() {
  return jpegPhoto(
      {.exif = exifStructure({photoDirectory(
           {exifText(0x010F, "NIKON CORPORATION"), exifText(0x010E, "caf\xC3\xA9"),
            exifShort(0x0112, 6)},
           {exifText(0x9003, "2015:06:07 08:09:10"), exifRational(0x829A, {1, 250}),
            exifBytes(0x927C, std::string("Nikon\0\2\x10\0\0", 10) +
                                  exifStructure({{exifBytes(0x0001, "0210")}}, true))},
           {exifText(1, "N"), exifRational(2, {10, 1, 20, 1, 30, 1}), exifText(3, "E"),
            exifRational(4, {10, 1, 20, 1, 30, 1})})}),
       .xmp = xmpDocument(xmpList("dc:subject", "Bag", {"a", "b"}) + "<xmp:Rating>4</xmp:Rating>"),
       .iptc = iptcDatasets({{25, "c"}, {55, "20150607"}})});
}

TEST(DamagedPhoto, IsReadAsFarAsItIsWhole) {
  const std::string whole = richPhoto();
  const TempDir folder;
  for (std::size_t size = 0; size < whole.size(); size += 7)
    tagsOfFile(folder.write("photo.jpg", whole.substr(0, size)));
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::string damaged = whole;
    for (int flips = 0; flips < 4; ++flips)
      damaged[random() % damaged.size()] = static_cast<char>(random());
    tagsOfFile(folder.write("photo.jpg", damaged));
  }
}

}  // namespace

}  // namespace kolum::test
