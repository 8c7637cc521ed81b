#include "support/exif_builder.h"

#include "support/hostile_bytes.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"

namespace kolum::test {

namespace {

std::size_t sizeOf(ExifType type) {
  switch (type) {
    case ExifType::kShort:
      return 2;
    case ExifType::kLong:
    case ExifType::kSignedLong:
      return 4;
    case ExifType::kRational:
    case ExifType::kSignedRational:
      return 8;
    default:
      return 1;
  }
}

class Writer {
 public:
  explicit Writer(bool isBigEndian) : isBigEndian_(isBigEndian) {}

  std::string number(std::uint64_t value, int size) const {
    return isBigEndian_ ? bigEndian(value, size) : littleEndian(value, size);
  }

  // Appends DIRECTORY and returns where it begins; its last four bytes name the next one.
  std::size_t append(const ExifDirectory& directory, std::string& out, std::size_t& nextAt) {
    if (out.size() % 2 != 0) out += '\0';
    const std::size_t begin = out.size();
    out += number(directory.size(), 2) + zeros(directory.size() * 12 + 4);
    nextAt = out.size() - 4;
    for (std::size_t i = 0; i < directory.size(); ++i) {
      const std::string entry = entryOf(directory[i], out);
      out.replace(begin + 2 + i * 12, 12, entry);
    }
    return begin;
  }

 private:
  std::string valueOf(const ExifTag& tag, std::string& out) {
    std::string value = tag.text;
    const bool isRatio = tag.type == ExifType::kRational || tag.type == ExifType::kSignedRational;
    const int size = isRatio ? 4 : static_cast<int>(sizeOf(tag.type));
    for (const std::int64_t n : tag.numbers) value += number(static_cast<std::uint64_t>(n), size);
    for (const ExifDirectory& directory : tag.directories) {
      std::size_t nextAt = 0;
      value += number(append(directory, out, nextAt), 4);
    }
    return value;
  }

  std::string entryOf(const ExifTag& tag, std::string& out) {
    std::string value = valueOf(tag, out);
    const std::size_t count = value.size() / sizeOf(tag.type);
    if (value.size() > 4) {
      if (out.size() % 2 != 0) out += '\0';
      const std::size_t at = out.size();
      out += value;
      value = number(at, 4);
    }
    value.resize(4);
    return number(tag.tag, 2) + number(static_cast<unsigned>(tag.type), 2) + number(count, 4) +
           value;
  }

  bool isBigEndian_;
};

}  // namespace

ExifTag exifText(unsigned tag, const std::string& text) {
  return {.tag = tag, .type = ExifType::kAscii, .text = text + '\0'};
}

ExifTag exifBytes(unsigned tag, const std::string& bytes) {
  return {.tag = tag, .type = ExifType::kUndefined, .text = bytes};
}

ExifTag exifShort(unsigned tag, std::int64_t number) {
  return {.tag = tag, .type = ExifType::kShort, .numbers = {number}};
}

ExifTag exifLong(unsigned tag, std::int64_t number) {
  return {.tag = tag, .type = ExifType::kLong, .numbers = {number}};
}

ExifTag exifRational(unsigned tag, std::vector<std::int64_t> numbers) {
  return {.tag = tag, .type = ExifType::kRational, .numbers = std::move(numbers)};
}

ExifTag exifSignedRational(unsigned tag, std::int64_t num, std::int64_t den) {
  return {.tag = tag, .type = ExifType::kSignedRational, .numbers = {num, den}};
}

ExifTag exifDirectories(unsigned tag, std::vector<ExifDirectory> directories) {
  return {.tag = tag, .type = ExifType::kLong, .directories = std::move(directories)};
}

std::string exifStructure(const std::vector<ExifDirectory>& chain, bool isBigEndian,
                          const std::string& magic) {
  Writer writer(isBigEndian);
  std::string out =
      magic.empty() ? (isBigEndian ? std::string("MM\0*", 4) : std::string("II*\0", 4)) : magic;
  std::size_t nextAt = out.size();
  out += zeros(4);
  for (const ExifDirectory& directory : chain) {
    std::size_t next = 0;
    const std::size_t begin = writer.append(directory, out, next);
    out.replace(nextAt, 4, writer.number(begin, 4));
    nextAt = next;
  }
  return out;
}

ExifDirectory photoDirectory(ExifDirectory directory, ExifDirectory exif, ExifDirectory gps) {
  if (!exif.empty()) directory.push_back(exifDirectories(0x8769, {std::move(exif)}));
  if (!gps.empty()) directory.push_back(exifDirectories(0x8825, {std::move(gps)}));
  return directory;
}

std::string xmpDocument(const std::string& children) {
  return "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>"
         "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
         "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
         "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' "
         "xmlns:xmp='http://ns.adobe.com/xap/1.0/' "
         "xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/' "
         "xmlns:exif='http://ns.adobe.com/exif/1.0/' "
         "xmlns:lr='http://ns.adobe.com/lightroom/1.0/' "
         "xmlns:GCamera='http://ns.google.com/photos/1.0/camera/' "
         "xmlns:Container='http://ns.google.com/photos/1.0/container/' "
         "xmlns:Item='http://ns.google.com/photos/1.0/container/item/' "
         "xmlns:mwg-rs='http://www.metadataworkinggroup.com/schemas/regions/' "
         "xmlns:stArea='http://ns.adobe.com/xmp/sType/Area#' "
         "xmlns:MP='http://ns.microsoft.com/photo/1.2/' "
         "xmlns:MPRI='http://ns.microsoft.com/photo/1.2/t/RegionInfo#' "
         "xmlns:MPReg='http://ns.microsoft.com/photo/1.2/t/Region#'>" +
         children + "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

std::string xmpList(const std::string& name, const std::string& kind,
                    const std::vector<std::string>& texts) {
  std::string items;
  for (const std::string& text : texts) items += "<rdf:li>" + text + "</rdf:li>";
  return "<" + name + "><rdf:" + kind + ">" + items + "</rdf:" + kind + "></" + name + ">";
}

std::string iptcDatasets(const std::vector<std::pair<unsigned, std::string>>& datasets) {
  std::string bytes;
  for (const auto& [number, text] : datasets)
    bytes += "\x1C\x02" + bigEndian(number, 1) + bigEndian(text.size(), 2) + text;
  return bytes;
}

std::string jpegPhoto(const PhotoBlocks& blocks) {
  std::string segments;
  if (!blocks.exif.empty()) segments += jpegSegment(0xE1, std::string("Exif\0\0", 6) + blocks.exif);
  if (!blocks.xmp.empty())
    segments += jpegSegment(0xE1, std::string("http://ns.adobe.com/xap/1.0/\0", 29) + blocks.xmp);
  if (!blocks.iptc.empty()) {
    const std::string padding(blocks.iptc.size() % 2, '\0');
    segments +=
        jpegSegment(0xED, std::string("Photoshop 3.0\0", 14) + "8BIM" + bigEndian(0x0404, 2) +
                              zeros(2) + bigEndian(blocks.iptc.size(), 4) + blocks.iptc + padding);
  }
  return jpeg(segments + blocks.segments + jpegFrame({}));
}

std::string extendedXmpSegment(const std::string& guid, std::size_t total, std::size_t offset,
                               const std::string& part) {
  return jpegSegment(0xE1, std::string("http://ns.adobe.com/xmp/extension/\0", 35) + guid +
                               bigEndian(total, 4) + bigEndian(offset, 4) + part);
}

std::string pngPhoto(const PhotoBlocks& blocks) {
  std::string chunks;
  if (!blocks.exif.empty()) chunks += pngChunk("eXIf", blocks.exif);
  if (!blocks.xmp.empty())
    chunks += pngChunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0", 22) + blocks.xmp);
  return png({}, chunks);
}

std::string webpPhoto(const PhotoBlocks& blocks) {
  constexpr unsigned kHasExif = 8;
  constexpr unsigned kHasXmp = 4;
  std::string chunks = webpExtended(kHasExif | kHasXmp, 20, 10) + webpLossless(20, 10);
  if (!blocks.exif.empty()) chunks += webpChunk("EXIF", blocks.exif);
  if (!blocks.xmp.empty()) chunks += webpChunk("XMP ", blocks.xmp);
  return webp(chunks);
}

std::string gifPhoto(const std::string& xmp) {
  std::string trailer(1, '\1');
  for (int i = 255; i >= 0; --i) trailer += static_cast<char>(i);
  std::string file = gif(20, 10);
  // Behind the header and the screen's size.
  file.insert(13, "!\xFF\x0BXMP DataXMP" + xmp + trailer + '\0');
  return file;
}

namespace {

std::string jpegXlPicture() {
  return bigEndian(12, 4) + "JXL \r\n\x87\n" + box("ftyp", "jxl " + zeros(4) + "jxl ") +
         box("jxlc", "\xFF\x0A" + zeros(20));
}

}  // namespace

std::string compressedJpegXlPhoto(const PhotoBlocks& blocks) {
  return jpegXlPicture() + box("brob", "Exif" + brotliCompressed(zeros(4) + blocks.exif)) +
         box("brob", "xml " + brotliCompressed(blocks.xmp));
}

std::string jpegXlPhoto(const PhotoBlocks& blocks) {
  std::string file = jpegXlPicture();
  if (!blocks.exif.empty()) file += box("Exif", zeros(4) + blocks.exif);
  if (!blocks.xmp.empty()) file += box("xml ", blocks.xmp);
  return file;
}

std::string heifPhoto(const PhotoBlocks& blocks, const HeifShape& shape) {
  const std::string exif = bigEndian(0, 4) + blocks.exif;
  const std::string data = exif + blocks.xmp;
  const auto item = [](unsigned id, const std::string& rest) {
    return fullBox("infe", 2, 0, bigEndian(id, 2) + zeros(2) + rest);
  };
  const std::string items = fullBox("iinf", 0, 0,
                                    bigEndian(3, 2) + item(1, std::string("hvc1\0", 5)) +
                                        item(2, std::string("Exif\0", 5)) +
                                        item(3, std::string("mime\0application/rdf+xml\0", 25)));
  const auto meta = [&](std::size_t dataAt) {
    const auto place = [&](unsigned id, std::size_t at, std::size_t size) {
      return bigEndian(id, 2) + bigEndian(shape.isInMetaBox ? 1 : 0, 2) + zeros(2) +
             bigEndian(1, 2) + bigEndian(at, 4) + bigEndian(size, 4);
    };
    const std::string places =
        fullBox("iloc", 1, 0,
                bigEndian(0x4400, 2) + bigEndian(2, 2) + place(2, dataAt, exif.size()) +
                    place(3, dataAt + exif.size(), blocks.xmp.size()));
    std::string container;
    std::string indices;
    for (std::size_t i = 0; i < shape.properties.size(); ++i) {
      container += shape.properties[i];
      indices += bigEndian(i + 1, 1);
    }
    const std::string properties =
        box("iprp",
            box("ipco", container) + fullBox("ipma", 0, 0,
                                             bigEndian(1, 4) + bigEndian(1, 2) +
                                                 bigEndian(shape.properties.size(), 1) + indices));
    return fullBox("meta", 0, 0,
                   fullBox("hdlr", 0, 0, zeros(4) + "pict" + zeros(13)) +
                       fullBox("pitm", 0, 0, bigEndian(1, 2)) + places + items + properties +
                       (shape.isInMetaBox ? box("idat", data) : ""));
  };
  const std::string type = ftyp(shape.brand, {"mif1", shape.brand});
  if (shape.isInMetaBox) return type + meta(0) + box("mdat", zeros(16));
  return type + meta(type.size() + meta(0).size() + 8) + box("mdat", data);
}

std::string canonRaw3(const ExifDirectory& main, const ExifDirectory& exif,
                      const ExifDirectory& notes, const ExifDirectory& gps,
                      const std::string& xmp) {
  const std::string canon("\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);
  const std::string adobe("\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC", 16);
  const std::string tags = box("CMT1", exifStructure({main})) + box("CMT2", exifStructure({exif})) +
                           box("CMT3", exifStructure({notes})) + box("CMT4", exifStructure({gps}));
  return ftyp("crx ", {"crx ", "isom"}) + box("moov", box("uuid", canon + tags)) +
         (xmp.empty() ? "" : box("uuid", adobe + xmp)) + box("mdat", zeros(16));
}

std::string fujifilmRaw(const std::string& jpeg, unsigned width, unsigned height) {
  const std::string values = bigEndian(1, 4) + bigEndian(0x0111, 2) + bigEndian(4, 2) +
                             bigEndian(height, 2) + bigEndian(width, 2);
  constexpr std::size_t kHeader = 108;
  std::string file = "FUJIFILMCCD-RAW 0201";
  file.resize(84);
  file += bigEndian(kHeader + values.size(), 4) + bigEndian(jpeg.size(), 4) +
          bigEndian(kHeader, 4) + bigEndian(values.size(), 4);
  file.resize(kHeader);
  return file + values + jpeg;
}

}  // namespace kolum::test
