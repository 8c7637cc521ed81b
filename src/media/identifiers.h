// The identifiers of containers, codecs, profiles and play exceptions: their names, and conversions
// from FFmpeg's numbers (those of release 57).
#ifndef KOLUM_MEDIA_IDENTIFIERS_H
#define KOLUM_MEDIA_IDENTIFIERS_H

#include <kolum/identifiers.h>

#include <optional>
#include <string_view>

namespace kolum::media {

// Null names are unknown. Names lack the prefix of their enumeration if hosts know them without it.
std::optional<int> formatOfName(const char* name);
std::optional<int> brandOfName(const char* name);
std::optional<int> codecOfName(const char* name);
std::optional<int> profileOfName(const char* name);
std::optional<int> playExceptionOfName(const char* name);

std::optional<std::string_view> formatName(int format);
std::optional<std::string_view> brandName(int brand);
// The extension of songs in a container; accepts FORMAT_* alone or an identifier with a brand.
std::optional<std::string_view> songExtension(int containerFormat);
std::optional<std::string_view> codecName(int codec);
// The profile family of a codec ("PROFILE_H264"); "UNKNOWN" for other codecs and for no profile.
std::string_view profileFamilyName(int profile, int codec);

// A container's identifier is its FORMAT_* and, for MP4 and QuickTime, the brand's MPEG4_*.
inline constexpr unsigned kFormatMask = 0xFFFF;
inline constexpr int kBrandShift = 16;

// CODEC_ID_* for FFmpeg's number; negative if there is none.
int codecOfFfmpeg(int ffmpegCodec);
// PROFILE_* for FFmpeg's number, which depends on the codec.
int profileOfFfmpeg(int codec, int ffmpegProfile);

}  // namespace kolum::media

#endif
