// The layout of records that hosts were compiled with.
#include <gtest/gtest.h>
#include <kolum/kolum.h>

#include <cstddef>

namespace {

TEST(VideoRecord, HasFixedLayout) {
  struct Field {
    const char* name;
    std::size_t offset;
    std::size_t expected;
  };
#define KOLUM_FIELD(name, expected) \
  { #name, offsetof(videoObject_st, name), expected }
  const Field fields[] = {
      KOLUM_FIELD(yearMonth, 0),
      KOLUM_FIELD(creationDate, 8),
      KOLUM_FIELD(creationYear, 20),
      KOLUM_FIELD(mimeType, 24),
      KOLUM_FIELD(dlnaProfile, 120),
      KOLUM_FIELD(duration, 248),
      KOLUM_FIELD(width, 252),
      KOLUM_FIELD(height, 256),
      KOLUM_FIELD(videoBitRate, 260),
      KOLUM_FIELD(sampleRate, 264),
      KOLUM_FIELD(bitsPerSample, 268),
      KOLUM_FIELD(channels, 272),
      KOLUM_FIELD(playException, 276),
      KOLUM_FIELD(containerFormat, 280),
      KOLUM_FIELD(videoCodec, 284),
      KOLUM_FIELD(videoProfile, 288),
      KOLUM_FIELD(videoLevel, 292),
      KOLUM_FIELD(audioCodec, 296),
      KOLUM_FIELD(audioProfile, 300),
      KOLUM_FIELD(audioClass, 304),
      KOLUM_FIELD(audioLevel, 308),
      KOLUM_FIELD(audioBitRate, 312),
      KOLUM_FIELD(creationTime, 320),
      KOLUM_FIELD(orientation, 328),
      KOLUM_FIELD(subtitleCount, 332),
      KOLUM_FIELD(is360, 336),
      KOLUM_FIELD(bitRate, 340),
      KOLUM_FIELD(frameRate, 344),
      KOLUM_FIELD(sampleAspectNum, 352),
      KOLUM_FIELD(sampleAspectDen, 356),
      KOLUM_FIELD(displayAspectNum, 360),
      KOLUM_FIELD(displayAspectDen, 364),
      KOLUM_FIELD(contentIdentifier, 368),
  };
#undef KOLUM_FIELD
  for (const Field& field : fields) EXPECT_EQ(field.offset, field.expected) << field.name;
  EXPECT_EQ(sizeof(videoObject_st), 432U);
}

TEST(MediaInfoRecords, HaveFixedLayout) {
  EXPECT_EQ(offsetof(MediaInfo, streamCount), 16U);
  EXPECT_EQ(offsetof(MediaInfo, streams), 24U);
  EXPECT_EQ(sizeof(MediaInfo), 32U);
  // Seventeen numbers of 32 bits.
  EXPECT_EQ(offsetof(MediaStreamInfo, profile), 3 * 4U);
  EXPECT_EQ(offsetof(MediaStreamInfo, bitRate), 5 * 4U);
  EXPECT_EQ(offsetof(MediaStreamInfo, isDivx), 9 * 4U);
  EXPECT_EQ(offsetof(MediaStreamInfo, width), 11 * 4U);
  EXPECT_EQ(offsetof(MediaStreamInfo, rotation), 13 * 4U);
  EXPECT_EQ(offsetof(MediaStreamInfo, frameRateDen), 16 * 4U);
  EXPECT_EQ(sizeof(MediaStreamInfo), 17 * 4U);
}

TEST(SongRecord, HasFixedLayout) {
  EXPECT_EQ(offsetof(songObject_st, track), 0U);
  EXPECT_EQ(offsetof(songObject_st, duration), 4U);
  EXPECT_EQ(offsetof(songObject_st, title), 8U);
  EXPECT_EQ(offsetof(songObject_st, artist), 264U);
  EXPECT_EQ(offsetof(songObject_st, albumArtist), 520U);
  EXPECT_EQ(offsetof(songObject_st, album), 776U);
  EXPECT_EQ(offsetof(songObject_st, year), 1032U);
  EXPECT_EQ(offsetof(songObject_st, genre), 1036U);
  // Two words that belong to the hosts precede the sample rate, and one precedes the profile.
  EXPECT_EQ(offsetof(songObject_st, sampleRate), 1300U);
  EXPECT_EQ(offsetof(songObject_st, bitRate), 1304U);
  EXPECT_EQ(offsetof(songObject_st, channels), 1308U);
  EXPECT_EQ(offsetof(songObject_st, containerFormat), 1312U);
  EXPECT_EQ(offsetof(songObject_st, profile), 1320U);
  EXPECT_EQ(offsetof(songObject_st, level), 1324U);
  EXPECT_EQ(sizeof(songObject_st), 1328U);
}

TEST(ConfigurationRecord, HasFixedLayout) {
  EXPECT_EQ(offsetof(lumCfg_s, enable), 0U);
  EXPECT_EQ(offsetof(lumCfg_s, mode), 4U);
  EXPECT_EQ(offsetof(lumCfg_s, thumbStatus), 8U);
  EXPECT_EQ(offsetof(lumCfg_s, faceStatus), 12U);
  EXPECT_EQ(offsetof(lumCfg_s, imgClassifyStatus), 16U);
  EXPECT_EQ(offsetof(lumCfg_s, deviceType), 20U);
  EXPECT_EQ(offsetof(lumCfg_s, startWorkday), 24U);
  EXPECT_EQ(offsetof(lumCfg_s, endWorkday), 28U);
  EXPECT_EQ(offsetof(lumCfg_s, dailyBuildHH), 32U);
  EXPECT_EQ(offsetof(lumCfg_s, dailyBuildMM), 36U);
  EXPECT_EQ(offsetof(lumCfg_s, dailyBuildEndHH), 40U);
  EXPECT_EQ(offsetof(lumCfg_s, dailyBuildEndMM), 44U);
  EXPECT_EQ(offsetof(lumCfg_s, mcVersion), 48U);
  EXPECT_EQ(offsetof(lumCfg_s, enable4K), 80U);
  EXPECT_EQ(offsetof(lumCfg_s, minWidth), 84U);
  EXPECT_EQ(offsetof(lumCfg_s, minHeight), 88U);
  EXPECT_EQ(offsetof(lumCfg_s, quality), 92U);
  EXPECT_EQ(offsetof(lumCfg_s, photoBlacklist), 96U);
  EXPECT_EQ(offsetof(lumCfg_s, musicBlacklist), 120U);
  EXPECT_EQ(offsetof(lumCfg_s, videoBlacklist), 144U);
  EXPECT_EQ(sizeof(lumCfg_s), 168U);
}

TEST(ServerAnswer, HasFixedLayout) {
  using MediaLibrary::LUM::SocketResp_t;
  EXPECT_EQ(offsetof(SocketResp_t, result), 0U);
  EXPECT_EQ(offsetof(SocketResp_t, length), 8U);
  EXPECT_EQ(offsetof(SocketResp_t, data), 16U);
  EXPECT_EQ(sizeof(SocketResp_t), 24U);
}

TEST(PlaceRecords, HaveFixedLayout) {
  using namespace MediaLibrary;
  EXPECT_EQ(offsetof(osm_param_s, lat), 0U);
  EXPECT_EQ(offsetof(osm_param_s, lon), 8U);
  EXPECT_EQ(offsetof(osm_param_s, zoom), 16U);
  EXPECT_EQ(sizeof(osm_param_s), 24U);
  EXPECT_EQ(offsetof(osm_addr_unit_s, name), 0U);
  EXPECT_EQ(offsetof(osm_addr_unit_s, value), 32U);
  EXPECT_EQ(offsetof(osm_addr_unitv_s, language), 0U);
  EXPECT_EQ(offsetof(osm_addr_unitv_s, units), 8U);
  EXPECT_EQ(offsetof(osm_address_s, language), 0U);
  EXPECT_EQ(offsetof(osm_address_s, address), 8U);
  EXPECT_EQ(offsetof(osm_place_s, osmType), 0U);
  EXPECT_EQ(offsetof(osm_place_s, osmId), 8U);
  EXPECT_EQ(offsetof(osm_place_s, addresses), 40U);
  EXPECT_EQ(offsetof(osm_place_s, addressParts), 64U);
  EXPECT_EQ(sizeof(osm_place_s), 88U);
}

TEST(HashNode, HasFixedLayout) {
  EXPECT_EQ(offsetof(MediaHashNode, row), 0U);
  EXPECT_EQ(offsetof(MediaHashNode, extension), 8U);
  EXPECT_EQ(offsetof(MediaHashNode, next), 16U);
  EXPECT_EQ(sizeof(MediaHashNode), 24U);
}

}  // namespace
