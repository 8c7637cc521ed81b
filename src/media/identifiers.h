// The identifiers of containers, codecs, profiles and play exceptions: names, and what FFmpeg's
// numbers (those of release 57) are converted to.
#ifndef KOLUM_MEDIA_IDENTIFIERS_H
#define KOLUM_MEDIA_IDENTIFIERS_H

#include <kolum/identifiers.h>

#include <optional>
#include <string_view>

namespace kolum::media {

// Null names are unknown. Names are without the prefix of their enumeration where hosts know them
// so.
std::optional<int> formatOfName(const char* name);
std::optional<int> brandOfName(const char* name);
std::optional<int> codecOfName(const char* name);
std::optional<int> profileOfName(const char* name);
std::optional<int> playExceptionOfName(const char* name);

std::optional<std::string_view> formatName(int format);
std::optional<std::string_view> brandName(int brand);
// The extension of songs in a container: FORMAT_* alone, or as an identifier with a brand.
std::optional<std::string_view> songExtension(int containerFormat);
std::optional<std::string_view> codecName(int codec);
// The profiles' family of a codec ("PROFILE_H264"); "UNKNOWN" for other codecs and no profile.
std::string_view profileFamilyName(int profile, int codec);

// A container's identifier is its FORMAT_* and, for MP4 and QuickTime, the brand's MPEG4_*.
inline constexpr unsigned kFormatMask = 0xFFFF;
inline constexpr int kBrandShift = 16;

// CODEC_ID_* of FFmpeg's number; negative when there is none.
int codecOfFfmpeg(int ffmpegCodec);
// PROFILE_* of FFmpeg's number, which depends on the codec.
int profileOfFfmpeg(int codec, int ffmpegProfile);

}  // namespace kolum::media

#endif
