#include "media/identifiers.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace kolum::media {

namespace {

// Rows are in look-up order: of two rows that match, the first wins.
struct Identifier {
  int id;
  std::string_view name;
};

#define KOLUM_ROW(identifier) \
  { identifier, #identifier }

constexpr auto kFormats = std::to_array<Identifier>({
    KOLUM_ROW(FORMAT_UNKNOWN), KOLUM_ROW(FORMAT_MP3),    KOLUM_ROW(FORMAT_WAV),
    KOLUM_ROW(FORMAT_FLAC),    KOLUM_ROW(FORMAT_APE),    KOLUM_ROW(FORMAT_OGG),
    KOLUM_ROW(FORMAT_AC3),     KOLUM_ROW(FORMAT_ASF),    KOLUM_ROW(FORMAT_MPEG4),
    KOLUM_ROW(FORMAT_AVI),     KOLUM_ROW(FORMAT_MPEG),   KOLUM_ROW(FORMAT_TS),
    KOLUM_ROW(FORMAT_MKV),     KOLUM_ROW(FORMAT_FLV),    KOLUM_ROW(FORMAT_AIFF),
    KOLUM_ROW(FORMAT_AU),      KOLUM_ROW(FORMAT_AAC),    KOLUM_ROW(FORMAT_DVDISO),
    KOLUM_ROW(FORMAT_BDISO),   KOLUM_ROW(FORMAT_DVDIFO), KOLUM_ROW(FORMAT_BDBDMV),
    KOLUM_ROW(FORMAT_RM),      KOLUM_ROW(FORMAT_DSF),    KOLUM_ROW(FORMAT_DFF),
    KOLUM_ROW(FORMAT_WV),      KOLUM_ROW(FORMAT_RA),
});
static_assert(kFormats.size() == 26);

constexpr auto kBrands = std::to_array<Identifier>({
    KOLUM_ROW(MPEG4_M4A),
    KOLUM_ROW(MPEG4_M4V),
    KOLUM_ROW(MPEG4_MP4),
    KOLUM_ROW(MPEG4_MOV),
    KOLUM_ROW(MPEG4_MSNV),
    KOLUM_ROW(MPEG4_ISOM),
    KOLUM_ROW(MPEG4_MJP2),
    KOLUM_ROW(MPEG4_3G2),
    KOLUM_ROW(MPEG4_3GP),
    KOLUM_ROW(MPEG4_MP4_FASTSTART),
    KOLUM_ROW(MPEG4_MOV_FASTSTART),
});
static_assert(kBrands.size() == 11);

// The extension of audio attached to a container.
constexpr auto kAudioAttachedNames = std::to_array<Identifier>({
    {FORMAT_UNKNOWN, "dat"}, {FORMAT_MP3, "mp3"},    {FORMAT_WAV, "wav"},   {FORMAT_FLAC, "flac"},
    {FORMAT_APE, "ape"},     {FORMAT_OGG, "ogg"},    {FORMAT_AC3, "ac3"},   {FORMAT_ASF, "asf"},
    {FORMAT_MPEG4, "mp4"},   {FORMAT_AVI, "avi"},    {FORMAT_MPEG, "mpg"},  {FORMAT_TS, "ts"},
    {FORMAT_MKV, "mkv"},     {FORMAT_FLV, "flv"},    {FORMAT_AIFF, "aiff"}, {FORMAT_AU, "au"},
    {FORMAT_AAC, "aac"},     {FORMAT_DVDISO, "iso"}, {FORMAT_BDISO, "iso"}, {FORMAT_DVDIFO, "ifo"},
    {FORMAT_BDBDMV, "bdmv"}, {FORMAT_RM, "rmvb"},    {FORMAT_DSF, "dsf"},   {FORMAT_DFF, "dff"},
    {FORMAT_WV, "wv"},       {FORMAT_RA, "ra"},
});
static_assert(kAudioAttachedNames.size() == kFormats.size());

constexpr auto kCodecs = std::to_array<Identifier>({
    KOLUM_ROW(CODEC_ID_NONE),
    KOLUM_ROW(CODEC_ID_MPEG1VIDEO),
    KOLUM_ROW(CODEC_ID_MPEG2VIDEO),
    KOLUM_ROW(CODEC_ID_MPEG2VIDEO_XVMC),
    KOLUM_ROW(CODEC_ID_H261),
    KOLUM_ROW(CODEC_ID_H263),
    KOLUM_ROW(CODEC_ID_RV10),
    KOLUM_ROW(CODEC_ID_RV20),
    KOLUM_ROW(CODEC_ID_MJPEG),
    KOLUM_ROW(CODEC_ID_MJPEGB),
    KOLUM_ROW(CODEC_ID_LJPEG),
    KOLUM_ROW(CODEC_ID_SP5X),
    KOLUM_ROW(CODEC_ID_JPEGLS),
    KOLUM_ROW(CODEC_ID_MPEG4),
    KOLUM_ROW(CODEC_ID_RAWVIDEO),
    KOLUM_ROW(CODEC_ID_MSMPEG4V1),
    KOLUM_ROW(CODEC_ID_MSMPEG4V2),
    KOLUM_ROW(CODEC_ID_MSMPEG4V3),
    KOLUM_ROW(CODEC_ID_WMV1),
    KOLUM_ROW(CODEC_ID_WMV2),
    KOLUM_ROW(CODEC_ID_H263P),
    KOLUM_ROW(CODEC_ID_H263I),
    KOLUM_ROW(CODEC_ID_FLV1),
    KOLUM_ROW(CODEC_ID_SVQ1),
    KOLUM_ROW(CODEC_ID_SVQ3),
    KOLUM_ROW(CODEC_ID_DVVIDEO),
    KOLUM_ROW(CODEC_ID_HUFFYUV),
    KOLUM_ROW(CODEC_ID_CYUV),
    KOLUM_ROW(CODEC_ID_H264),
    KOLUM_ROW(CODEC_ID_INDEO3),
    KOLUM_ROW(CODEC_ID_VP3),
    KOLUM_ROW(CODEC_ID_THEORA),
    KOLUM_ROW(CODEC_ID_ASV1),
    KOLUM_ROW(CODEC_ID_ASV2),
    KOLUM_ROW(CODEC_ID_FFV1),
    KOLUM_ROW(CODEC_ID_4XM),
    KOLUM_ROW(CODEC_ID_VCR1),
    KOLUM_ROW(CODEC_ID_CLJR),
    KOLUM_ROW(CODEC_ID_MDEC),
    KOLUM_ROW(CODEC_ID_ROQ),
    KOLUM_ROW(CODEC_ID_INTERPLAY_VIDEO),
    KOLUM_ROW(CODEC_ID_XAN_WC3),
    KOLUM_ROW(CODEC_ID_XAN_WC4),
    KOLUM_ROW(CODEC_ID_RPZA),
    KOLUM_ROW(CODEC_ID_CINEPAK),
    KOLUM_ROW(CODEC_ID_WS_VQA),
    KOLUM_ROW(CODEC_ID_MSRLE),
    KOLUM_ROW(CODEC_ID_MSVIDEO1),
    KOLUM_ROW(CODEC_ID_IDCIN),
    KOLUM_ROW(CODEC_ID_8BPS),
    KOLUM_ROW(CODEC_ID_SMC),
    KOLUM_ROW(CODEC_ID_FLIC),
    KOLUM_ROW(CODEC_ID_TRUEMOTION1),
    KOLUM_ROW(CODEC_ID_VMDVIDEO),
    KOLUM_ROW(CODEC_ID_MSZH),
    KOLUM_ROW(CODEC_ID_ZLIB),
    KOLUM_ROW(CODEC_ID_QTRLE),
    KOLUM_ROW(CODEC_ID_SNOW),
    KOLUM_ROW(CODEC_ID_TSCC),
    KOLUM_ROW(CODEC_ID_ULTI),
    KOLUM_ROW(CODEC_ID_QDRAW),
    KOLUM_ROW(CODEC_ID_VIXL),
    KOLUM_ROW(CODEC_ID_QPEG),
    KOLUM_ROW(CODEC_ID_PNG),
    KOLUM_ROW(CODEC_ID_PPM),
    KOLUM_ROW(CODEC_ID_PBM),
    KOLUM_ROW(CODEC_ID_PGM),
    KOLUM_ROW(CODEC_ID_PGMYUV),
    KOLUM_ROW(CODEC_ID_PAM),
    KOLUM_ROW(CODEC_ID_FFVHUFF),
    KOLUM_ROW(CODEC_ID_RV30),
    KOLUM_ROW(CODEC_ID_RV40),
    KOLUM_ROW(CODEC_ID_VC1),
    KOLUM_ROW(CODEC_ID_WMV3),
    KOLUM_ROW(CODEC_ID_LOCO),
    KOLUM_ROW(CODEC_ID_WNV1),
    KOLUM_ROW(CODEC_ID_AASC),
    KOLUM_ROW(CODEC_ID_INDEO2),
    KOLUM_ROW(CODEC_ID_FRAPS),
    KOLUM_ROW(CODEC_ID_TRUEMOTION2),
    KOLUM_ROW(CODEC_ID_BMP),
    KOLUM_ROW(CODEC_ID_CSCD),
    KOLUM_ROW(CODEC_ID_MMVIDEO),
    KOLUM_ROW(CODEC_ID_ZMBV),
    KOLUM_ROW(CODEC_ID_AVS),
    KOLUM_ROW(CODEC_ID_SMACKVIDEO),
    KOLUM_ROW(CODEC_ID_NUV),
    KOLUM_ROW(CODEC_ID_KMVC),
    KOLUM_ROW(CODEC_ID_FLASHSV),
    KOLUM_ROW(CODEC_ID_CAVS),
    KOLUM_ROW(CODEC_ID_JPEG2000),
    KOLUM_ROW(CODEC_ID_VMNC),
    KOLUM_ROW(CODEC_ID_VP5),
    KOLUM_ROW(CODEC_ID_VP6),
    KOLUM_ROW(CODEC_ID_VP6F),
    KOLUM_ROW(CODEC_ID_TARGA),
    KOLUM_ROW(CODEC_ID_DSICINVIDEO),
    KOLUM_ROW(CODEC_ID_TIERTEXSEQVIDEO),
    KOLUM_ROW(CODEC_ID_TIFF),
    KOLUM_ROW(CODEC_ID_GIF),
    KOLUM_ROW(CODEC_ID_DXA),
    KOLUM_ROW(CODEC_ID_DNXHD),
    KOLUM_ROW(CODEC_ID_THP),
    KOLUM_ROW(CODEC_ID_SGI),
    KOLUM_ROW(CODEC_ID_C93),
    KOLUM_ROW(CODEC_ID_BETHSOFTVID),
    KOLUM_ROW(CODEC_ID_PTX),
    KOLUM_ROW(CODEC_ID_TXD),
    KOLUM_ROW(CODEC_ID_VP6A),
    KOLUM_ROW(CODEC_ID_AMV),
    KOLUM_ROW(CODEC_ID_VB),
    KOLUM_ROW(CODEC_ID_PCX),
    KOLUM_ROW(CODEC_ID_SUNRAST),
    KOLUM_ROW(CODEC_ID_INDEO4),
    KOLUM_ROW(CODEC_ID_INDEO5),
    KOLUM_ROW(CODEC_ID_MIMIC),
    KOLUM_ROW(CODEC_ID_RL2),
    KOLUM_ROW(CODEC_ID_ESCAPE124),
    KOLUM_ROW(CODEC_ID_DIRAC),
    KOLUM_ROW(CODEC_ID_BFI),
    KOLUM_ROW(CODEC_ID_CMV),
    KOLUM_ROW(CODEC_ID_MOTIONPIXELS),
    KOLUM_ROW(CODEC_ID_TGV),
    KOLUM_ROW(CODEC_ID_TGQ),
    KOLUM_ROW(CODEC_ID_TQI),
    KOLUM_ROW(CODEC_ID_AURA),
    KOLUM_ROW(CODEC_ID_AURA2),
    KOLUM_ROW(CODEC_ID_V210X),
    KOLUM_ROW(CODEC_ID_TMV),
    KOLUM_ROW(CODEC_ID_V210),
    KOLUM_ROW(CODEC_ID_DPX),
    KOLUM_ROW(CODEC_ID_MAD),
    KOLUM_ROW(CODEC_ID_FRWU),
    KOLUM_ROW(CODEC_ID_FLASHSV2),
    KOLUM_ROW(CODEC_ID_CDGRAPHICS),
    KOLUM_ROW(CODEC_ID_R210),
    KOLUM_ROW(CODEC_ID_ANM),
    KOLUM_ROW(CODEC_ID_BINKVIDEO),
    KOLUM_ROW(CODEC_ID_IFF_ILBM),
    KOLUM_ROW(CODEC_ID_IFF_BYTERUN1),
    KOLUM_ROW(CODEC_ID_KGV1),
    KOLUM_ROW(CODEC_ID_YOP),
    KOLUM_ROW(CODEC_ID_VP8),
    KOLUM_ROW(CODEC_ID_PICTOR),
    KOLUM_ROW(CODEC_ID_ANSI),
    KOLUM_ROW(CODEC_ID_A64_MULTI),
    KOLUM_ROW(CODEC_ID_A64_MULTI5),
    KOLUM_ROW(CODEC_ID_R10K),
    KOLUM_ROW(CODEC_ID_MXPEG),
    KOLUM_ROW(CODEC_ID_LAGARITH),
    KOLUM_ROW(CODEC_ID_PRORES),
    KOLUM_ROW(CODEC_ID_JV),
    KOLUM_ROW(CODEC_ID_DFA),
    KOLUM_ROW(CODEC_ID_WMV3IMAGE),
    KOLUM_ROW(CODEC_ID_VC1IMAGE),
    KOLUM_ROW(CODEC_ID_UTVIDEO),
    KOLUM_ROW(CODEC_ID_BMV_VIDEO),
    KOLUM_ROW(CODEC_ID_VBLE),
    KOLUM_ROW(CODEC_ID_DXTORY),
    KOLUM_ROW(CODEC_ID_V410),
    KOLUM_ROW(CODEC_ID_XWD),
    KOLUM_ROW(CODEC_ID_CDXL),
    KOLUM_ROW(CODEC_ID_XBM),
    KOLUM_ROW(CODEC_ID_ZEROCODEC),
    KOLUM_ROW(CODEC_ID_HEVC),
    KOLUM_ROW(CODEC_ID_H265),
    KOLUM_ROW(CODEC_ID_MSS1),
    KOLUM_ROW(CODEC_ID_MSA1),
    KOLUM_ROW(CODEC_ID_TSCC2),
    KOLUM_ROW(CODEC_ID_MTS2),
    KOLUM_ROW(CODEC_ID_CLLC),
    KOLUM_ROW(CODEC_ID_MSS2),
    KOLUM_ROW(CODEC_ID_VP9),
    KOLUM_ROW(CODEC_ID_AIC),
    KOLUM_ROW(CODEC_ID_ESCAPE130),
    KOLUM_ROW(CODEC_ID_G2M),
    KOLUM_ROW(CODEC_ID_WEBP),
    KOLUM_ROW(CODEC_ID_HNM4_VIDEO),
    KOLUM_ROW(CODEC_ID_FIRST_AUDIO),
    KOLUM_ROW(CODEC_ID_PCM_S16LE),
    KOLUM_ROW(CODEC_ID_PCM_S16BE),
    KOLUM_ROW(CODEC_ID_PCM_U16LE),
    KOLUM_ROW(CODEC_ID_PCM_U16BE),
    KOLUM_ROW(CODEC_ID_PCM_S8),
    KOLUM_ROW(CODEC_ID_PCM_U8),
    KOLUM_ROW(CODEC_ID_PCM_MULAW),
    KOLUM_ROW(CODEC_ID_PCM_ALAW),
    KOLUM_ROW(CODEC_ID_PCM_S32LE),
    KOLUM_ROW(CODEC_ID_PCM_S32BE),
    KOLUM_ROW(CODEC_ID_PCM_U32LE),
    KOLUM_ROW(CODEC_ID_PCM_U32BE),
    KOLUM_ROW(CODEC_ID_PCM_S24LE),
    KOLUM_ROW(CODEC_ID_PCM_S24BE),
    KOLUM_ROW(CODEC_ID_PCM_U24LE),
    KOLUM_ROW(CODEC_ID_PCM_U24BE),
    KOLUM_ROW(CODEC_ID_PCM_S24DAUD),
    KOLUM_ROW(CODEC_ID_PCM_ZORK),
    KOLUM_ROW(CODEC_ID_PCM_S16LE_PLANAR),
    KOLUM_ROW(CODEC_ID_PCM_DVD),
    KOLUM_ROW(CODEC_ID_PCM_F32BE),
    KOLUM_ROW(CODEC_ID_PCM_F32LE),
    KOLUM_ROW(CODEC_ID_PCM_F64BE),
    KOLUM_ROW(CODEC_ID_PCM_F64LE),
    KOLUM_ROW(CODEC_ID_PCM_BLURAY),
    KOLUM_ROW(CODEC_ID_PCM_LXF),
    KOLUM_ROW(CODEC_ID_S302M),
    KOLUM_ROW(CODEC_ID_PCM_S8_PLANAR),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_QT),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_WAV),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_DK3),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_DK4),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_WS),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_SMJPEG),
    KOLUM_ROW(CODEC_ID_ADPCM_MS),
    KOLUM_ROW(CODEC_ID_ADPCM_4XM),
    KOLUM_ROW(CODEC_ID_ADPCM_XA),
    KOLUM_ROW(CODEC_ID_ADPCM_ADX),
    KOLUM_ROW(CODEC_ID_ADPCM_EA),
    KOLUM_ROW(CODEC_ID_ADPCM_G726),
    KOLUM_ROW(CODEC_ID_ADPCM_CT),
    KOLUM_ROW(CODEC_ID_ADPCM_SWF),
    KOLUM_ROW(CODEC_ID_ADPCM_YAMAHA),
    KOLUM_ROW(CODEC_ID_ADPCM_SBPRO_4),
    KOLUM_ROW(CODEC_ID_ADPCM_SBPRO_3),
    KOLUM_ROW(CODEC_ID_ADPCM_SBPRO_2),
    KOLUM_ROW(CODEC_ID_ADPCM_THP),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_AMV),
    KOLUM_ROW(CODEC_ID_ADPCM_EA_R1),
    KOLUM_ROW(CODEC_ID_ADPCM_EA_R3),
    KOLUM_ROW(CODEC_ID_ADPCM_EA_R2),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_EA_SEAD),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_EA_EACS),
    KOLUM_ROW(CODEC_ID_ADPCM_EA_XAS),
    KOLUM_ROW(CODEC_ID_ADPCM_EA_MAXIS_XA),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_ISS),
    KOLUM_ROW(CODEC_ID_ADPCM_G722),
    KOLUM_ROW(CODEC_ID_ADPCM_IMA_APC),
    KOLUM_ROW(CODEC_ID_AMR_NB),
    KOLUM_ROW(CODEC_ID_AMR_WB),
    KOLUM_ROW(CODEC_ID_RA_144),
    KOLUM_ROW(CODEC_ID_RA_288),
    KOLUM_ROW(CODEC_ID_ROQ_DPCM),
    KOLUM_ROW(CODEC_ID_INTERPLAY_DPCM),
    KOLUM_ROW(CODEC_ID_XAN_DPCM),
    KOLUM_ROW(CODEC_ID_SOL_DPCM),
    KOLUM_ROW(CODEC_ID_MP2),
    KOLUM_ROW(CODEC_ID_MP3),
    KOLUM_ROW(CODEC_ID_AAC),
    KOLUM_ROW(CODEC_ID_AC3),
    KOLUM_ROW(CODEC_ID_DTS),
    KOLUM_ROW(CODEC_ID_VORBIS),
    KOLUM_ROW(CODEC_ID_DVAUDIO),
    KOLUM_ROW(CODEC_ID_WMAV1),
    KOLUM_ROW(CODEC_ID_WMAV2),
    KOLUM_ROW(CODEC_ID_MACE3),
    KOLUM_ROW(CODEC_ID_MACE6),
    KOLUM_ROW(CODEC_ID_VMDAUDIO),
    KOLUM_ROW(CODEC_ID_FLAC),
    KOLUM_ROW(CODEC_ID_MP3ADU),
    KOLUM_ROW(CODEC_ID_MP3ON4),
    KOLUM_ROW(CODEC_ID_SHORTEN),
    KOLUM_ROW(CODEC_ID_ALAC),
    KOLUM_ROW(CODEC_ID_WESTWOOD_SND1),
    KOLUM_ROW(CODEC_ID_GSM),
    KOLUM_ROW(CODEC_ID_QDM2),
    KOLUM_ROW(CODEC_ID_COOK),
    KOLUM_ROW(CODEC_ID_TRUESPEECH),
    KOLUM_ROW(CODEC_ID_TTA),
    KOLUM_ROW(CODEC_ID_SMACKAUDIO),
    KOLUM_ROW(CODEC_ID_QCELP),
    KOLUM_ROW(CODEC_ID_WAVPACK),
    KOLUM_ROW(CODEC_ID_DSICINAUDIO),
    KOLUM_ROW(CODEC_ID_IMC),
    KOLUM_ROW(CODEC_ID_MUSEPACK7),
    KOLUM_ROW(CODEC_ID_MLP),
    KOLUM_ROW(CODEC_ID_GSM_MS),
    KOLUM_ROW(CODEC_ID_ATRAC3),
    KOLUM_ROW(CODEC_ID_VOXWARE),
    KOLUM_ROW(CODEC_ID_APE),
    KOLUM_ROW(CODEC_ID_NELLYMOSER),
    KOLUM_ROW(CODEC_ID_MUSEPACK8),
    KOLUM_ROW(CODEC_ID_SPEEX),
    KOLUM_ROW(CODEC_ID_WMAVOICE),
    KOLUM_ROW(CODEC_ID_WMAPRO),
    KOLUM_ROW(CODEC_ID_WMALOSSLESS),
    KOLUM_ROW(CODEC_ID_ATRAC3P),
    KOLUM_ROW(CODEC_ID_EAC3),
    KOLUM_ROW(CODEC_ID_SIPR),
    KOLUM_ROW(CODEC_ID_MP1),
    KOLUM_ROW(CODEC_ID_TWINVQ),
    KOLUM_ROW(CODEC_ID_TRUEHD),
    KOLUM_ROW(CODEC_ID_MP4ALS),
    KOLUM_ROW(CODEC_ID_ATRAC1),
    KOLUM_ROW(CODEC_ID_BINKAUDIO_RDFT),
    KOLUM_ROW(CODEC_ID_BINKAUDIO_DCT),
    KOLUM_ROW(CODEC_ID_AAC_LATM),
    KOLUM_ROW(CODEC_ID_QDMC),
    KOLUM_ROW(CODEC_ID_CELT),
    KOLUM_ROW(CODEC_ID_G723_1),
    KOLUM_ROW(CODEC_ID_G729),
    KOLUM_ROW(CODEC_ID_8SVX_EXP),
    KOLUM_ROW(CODEC_ID_8SVX_FIB),
    KOLUM_ROW(CODEC_ID_BMV_AUDIO),
    KOLUM_ROW(CODEC_ID_RALF),
    KOLUM_ROW(CODEC_ID_FIRST_SUBTITLE),
    KOLUM_ROW(CODEC_ID_DVD_SUBTITLE),
    KOLUM_ROW(CODEC_ID_DVB_SUBTITLE),
    KOLUM_ROW(CODEC_ID_TEXT),
    KOLUM_ROW(CODEC_ID_XSUB),
    KOLUM_ROW(CODEC_ID_SSA),
    KOLUM_ROW(CODEC_ID_MOV_TEXT),
    KOLUM_ROW(CODEC_ID_HDMV_PGS_SUBTITLE),
    KOLUM_ROW(CODEC_ID_DVB_TELETEXT),
    KOLUM_ROW(CODEC_ID_SRT),
    KOLUM_ROW(CODEC_ID_MICRODVD),
    KOLUM_ROW(CODEC_ID_EIA_608),
    KOLUM_ROW(CODEC_ID_JACOSUB),
    KOLUM_ROW(CODEC_ID_SAMI),
    KOLUM_ROW(CODEC_ID_REALTEXT),
    KOLUM_ROW(CODEC_ID_SUBVIEWER1),
    KOLUM_ROW(CODEC_ID_SUBVIEWER),
    KOLUM_ROW(CODEC_ID_SUBRIP),
    KOLUM_ROW(CODEC_ID_WEBVTT),
    KOLUM_ROW(CODEC_ID_MPL2),
    KOLUM_ROW(CODEC_ID_VPLAYER),
    KOLUM_ROW(CODEC_ID_PJS),
    KOLUM_ROW(CODEC_ID_ASS),
    KOLUM_ROW(CODEC_ID_FIRST_UNKNOWN),
    KOLUM_ROW(CODEC_ID_TTF),
    KOLUM_ROW(CODEC_ID_PROBE),
    KOLUM_ROW(CODEC_ID_MPEG2TS),
    KOLUM_ROW(CODEC_ID_MPEG4SYSTEMS),
    KOLUM_ROW(CODEC_ID_FFMETADATA),
    KOLUM_ROW(CODEC_ID_DSD),
});
static_assert(kCodecs.size() == 334);

constexpr auto kProfiles = std::to_array<Identifier>({
    KOLUM_ROW(PROFILE_UNKNOWN),
    KOLUM_ROW(PROFILE_RESERVED),
    KOLUM_ROW(PROFILE_AAC_MAIN),
    KOLUM_ROW(PROFILE_AAC_LOW),
    KOLUM_ROW(PROFILE_AAC_SSR),
    KOLUM_ROW(PROFILE_AAC_LTP),
    KOLUM_ROW(PROFILE_DTS),
    KOLUM_ROW(PROFILE_DTS_ES),
    KOLUM_ROW(PROFILE_DTS_96_24),
    KOLUM_ROW(PROFILE_DTS_HD_HRA),
    KOLUM_ROW(PROFILE_DTS_HD_MA),
    KOLUM_ROW(PROFILE_MPEG2_422),
    KOLUM_ROW(PROFILE_MPEG2_HIGH),
    KOLUM_ROW(PROFILE_MPEG2_SS),
    KOLUM_ROW(PROFILE_MPEG2_SNR_SCALABLE),
    KOLUM_ROW(PROFILE_MPEG2_MAIN),
    KOLUM_ROW(PROFILE_MPEG2_SIMPLE),
    KOLUM_ROW(PROFILE_H264_BASELINE),
    KOLUM_ROW(PROFILE_H264_CONSTRAINED_BASELINE),
    KOLUM_ROW(PROFILE_H264_MAIN),
    KOLUM_ROW(PROFILE_H264_EXTENDED),
    KOLUM_ROW(PROFILE_H264_HIGH),
    KOLUM_ROW(PROFILE_H264_HIGH_10),
    KOLUM_ROW(PROFILE_H264_HIGH_10_INTRA),
    KOLUM_ROW(PROFILE_H264_HIGH_422),
    KOLUM_ROW(PROFILE_H264_HIGH_422_INTRA),
    KOLUM_ROW(PROFILE_H264_HIGH_444),
    KOLUM_ROW(PROFILE_H264_HIGH_444_PREDICTIVE),
    KOLUM_ROW(PROFILE_H264_HIGH_444_INTRA),
    KOLUM_ROW(PROFILE_H264_CAVLC_444),
    KOLUM_ROW(PROFILE_VC1_SIMPLE),
    KOLUM_ROW(PROFILE_VC1_MAIN),
    KOLUM_ROW(PROFILE_VC1_COMPLEX),
    KOLUM_ROW(PROFILE_VC1_ADVANCED),
    KOLUM_ROW(PROFILE_MPEG4_SIMPLE),
    KOLUM_ROW(PROFILE_MPEG4_SIMPLE_SCALABLE),
    KOLUM_ROW(PROFILE_MPEG4_CORE),
    KOLUM_ROW(PROFILE_MPEG4_MAIN),
    KOLUM_ROW(PROFILE_MPEG4_N_BIT),
    KOLUM_ROW(PROFILE_MPEG4_SCALABLE_TEXTURE),
    KOLUM_ROW(PROFILE_MPEG4_SIMPLE_FACE_ANIMATION),
    KOLUM_ROW(PROFILE_MPEG4_BASIC_ANIMATED_TEXTURE),
    KOLUM_ROW(PROFILE_MPEG4_HYBRID),
    KOLUM_ROW(PROFILE_MPEG4_ADVANCED_REAL_TIME),
    KOLUM_ROW(PROFILE_MPEG4_CORE_SCALABLE),
    KOLUM_ROW(PROFILE_MPEG4_ADVANCED_CODING),
    KOLUM_ROW(PROFILE_MPEG4_ADVANCED_CORE),
    KOLUM_ROW(PROFILE_MPEG4_ADVANCED_SCALABLE_TEXTURE),
    KOLUM_ROW(PROFILE_MPEG4_SIMPLE_STUDIO),
    KOLUM_ROW(PROFILE_MPEG4_ADVANCED_SIMPLE),
});
static_assert(kProfiles.size() == 50);

constexpr auto kPlayExceptions = std::to_array<Identifier>({
    KOLUM_ROW(PLAY_EXCEPTION_DIVX_XVID),
    KOLUM_ROW(PLAY_EXCEPTION_DIVX_DX50),
    KOLUM_ROW(PLAY_EXCEPTION_DIVX_DIVX),
    KOLUM_ROW(PLAY_EXCEPTION_H264_AVC1),
});
static_assert(kPlayExceptions.size() == 4);

#undef KOLUM_ROW

// COUNT consecutive numbers of FFmpeg's release 57, starting with FFMPEG, and their counterparts in
// the library.
struct CodecRun {
  int ffmpeg;
  int library;
  int count;
};

// In the order of the library's identifiers; the first run that contains a number wins.
constexpr auto kCodecRuns = std::to_array<CodecRun>({
    {1, CODEC_ID_MPEG1VIDEO, 56},
    {0x800C, CODEC_ID_SNOW, 1},
    {57, CODEC_ID_TSCC, 80},
    {137, CODEC_ID_IFF_ILBM, 1},
    // Never reached: FFmpeg has one number where the library has two, and numbers in databases use
    // the first.
    {137, CODEC_ID_IFF_BYTERUN1, 1},
    {138, CODEC_ID_KGV1, 24},
    {174, CODEC_ID_HEVC, 1},
    {162, CODEC_ID_MSS1, 12},
    {0x10000, CODEC_ID_PCM_S16LE, 28},
    {0x11000, CODEC_ID_ADPCM_IMA_QT, 30},
    {0x12000, CODEC_ID_AMR_NB, 2},
    {0x13000, CODEC_ID_RA_144, 2},
    {0x14000, CODEC_ID_ROQ_DPCM, 4},
    {0x15000, CODEC_ID_MP2, 59},
    {0x17000, CODEC_ID_DVD_SUBTITLE, 9},
    {0x17800, CODEC_ID_MICRODVD, 1},
    {0x17801, CODEC_ID_EIA_608, 1},
    {0x17802, CODEC_ID_JACOSUB, 1},
    {0x17803, CODEC_ID_SAMI, 1},
    {0x17804, CODEC_ID_REALTEXT, 1},
    {0x17806, CODEC_ID_SUBVIEWER1, 1},
    {0x17807, CODEC_ID_SUBVIEWER, 1},
    {0x17808, CODEC_ID_SUBRIP, 1},
    {0x17809, CODEC_ID_WEBVTT, 1},
    {0x1780A, CODEC_ID_MPL2, 1},
    {0x1780B, CODEC_ID_VPLAYER, 1},
    {0x1780C, CODEC_ID_PJS, 1},
    {0x1780D, CODEC_ID_ASS, 1},
    {0x18000, CODEC_ID_TTF, 1},
    {0x19000, CODEC_ID_PROBE, 1},
    {0x20000, CODEC_ID_MPEG2TS, 2},
    {0x21000, CODEC_ID_FFMETADATA, 1},
    {0x16FFF, CODEC_ID_DSD, 1},
});

// The runs lead to every codec except "none", and to each from only one number.
consteval bool runsReachEachCodecOnce() {
  for (const Identifier& codec : kCodecs) {
    const auto reaches = [&](const CodecRun& run) {
      return codec.id >= run.library && codec.id < run.library + run.count;
    };
    const auto wanted = codec.id == CODEC_ID_NONE ? 0 : 1;
    if (std::count_if(kCodecRuns.begin(), kCodecRuns.end(), reaches) != wanted) return false;
  }
  return true;
}
static_assert(runsReachEachCodecOnce());

// They lead to nothing else: 334 rows minus "none" and four second names.
consteval int pairsOfRuns() {
  int pairs = 0;
  for (const CodecRun& run : kCodecRuns) pairs += run.count;
  return pairs;
}
static_assert(pairsOfRuns() == 329);

// AAC profiles that have numbers in the library but no names.
constexpr int kProfileAacHe = 36;
constexpr int kProfileAacLowDelay = 58725120;
constexpr int kProfileAacHeV2 = 134217764;

struct ProfileRow {
  int ffmpeg;
  int library;
};

constexpr auto kAacProfiles = std::to_array<ProfileRow>({
    {0, PROFILE_AAC_MAIN},
    {1, PROFILE_AAC_LOW},
    {2, PROFILE_AAC_SSR},
    {3, PROFILE_AAC_LTP},
    {4, kProfileAacHe},
    {22, kProfileAacLowDelay},
    {38, kProfileAacLowDelay},
    {28, kProfileAacHeV2},
    {128, PROFILE_AAC_LOW},
    {131, kProfileAacHe},
});

constexpr auto kDtsProfiles = std::to_array<ProfileRow>({
    {20, PROFILE_DTS},
    {30, PROFILE_DTS_ES},
    {40, PROFILE_DTS_96_24},
    {50, PROFILE_DTS_HD_HRA},
    {60, PROFILE_DTS_HD_MA},
});

constexpr auto kMpeg2Profiles = std::to_array<ProfileRow>({
    {0, PROFILE_MPEG2_422},
    {1, PROFILE_MPEG2_HIGH},
    {2, PROFILE_MPEG2_SS},
    {3, PROFILE_MPEG2_SNR_SCALABLE},
    {4, PROFILE_MPEG2_MAIN},
    {5, PROFILE_MPEG2_SIMPLE},
});

constexpr auto kH264Profiles = std::to_array<ProfileRow>({
    {66, PROFILE_H264_BASELINE},
    {578, PROFILE_H264_CONSTRAINED_BASELINE},
    {77, PROFILE_H264_MAIN},
    {88, PROFILE_H264_EXTENDED},
    {100, PROFILE_H264_HIGH},
    {110, PROFILE_H264_HIGH_10},
    {2158, PROFILE_H264_HIGH_10_INTRA},
    {122, PROFILE_H264_HIGH_422},
    {2170, PROFILE_H264_HIGH_422_INTRA},
    {144, PROFILE_H264_HIGH_444},
    {244, PROFILE_H264_HIGH_444_PREDICTIVE},
    {2292, PROFILE_H264_HIGH_444_INTRA},
    {44, PROFILE_H264_CAVLC_444},
});

constexpr auto kVc1Profiles = std::to_array<ProfileRow>({
    {0, PROFILE_VC1_SIMPLE},
    {1, PROFILE_VC1_MAIN},
    {2, PROFILE_VC1_COMPLEX},
    {3, PROFILE_VC1_ADVANCED},
});

// MPEG-4 Visual, indexed by FFmpeg's profile number. Used for every codec: numbers in databases
// depend on it.
constexpr auto kMpeg4Profiles = std::to_array<int>({
    PROFILE_MPEG4_SIMPLE,
    PROFILE_MPEG4_SIMPLE_SCALABLE,
    PROFILE_MPEG4_CORE,
    PROFILE_MPEG4_MAIN,
    PROFILE_MPEG4_N_BIT,
    PROFILE_MPEG4_SCALABLE_TEXTURE,
    PROFILE_MPEG4_SIMPLE_FACE_ANIMATION,
    PROFILE_MPEG4_BASIC_ANIMATED_TEXTURE,
    PROFILE_MPEG4_HYBRID,
    PROFILE_MPEG4_ADVANCED_REAL_TIME,
    PROFILE_MPEG4_CORE_SCALABLE,
    PROFILE_MPEG4_ADVANCED_CODING,
    PROFILE_MPEG4_ADVANCED_CORE,
    PROFILE_MPEG4_ADVANCED_SCALABLE_TEXTURE,
    PROFILE_MPEG4_SIMPLE_STUDIO,
    PROFILE_MPEG4_ADVANCED_SIMPLE,
});
static_assert(kMpeg4Profiles.size() == 16);

template <typename Table>
std::optional<int> idOf(const Table& table, const char* name) {
  if (name == nullptr) return std::nullopt;
  const auto row =
      std::find_if(table.begin(), table.end(), [&](const Identifier& r) { return r.name == name; });
  if (row == table.end()) return std::nullopt;
  return row->id;
}

template <typename Table>
constexpr std::optional<std::string_view> nameOf(const Table& table, int id) {
  const auto row =
      std::find_if(table.begin(), table.end(), [&](const Identifier& r) { return r.id == id; });
  if (row == table.end()) return std::nullopt;
  return row->name;
}

// The four identifiers with two names have the first as their name.
static_assert(nameOf(kCodecs, CODEC_ID_H265) == "CODEC_ID_HEVC");
static_assert(nameOf(kCodecs, CODEC_ID_PCM_S16LE) == "CODEC_ID_FIRST_AUDIO");
static_assert(nameOf(kCodecs, CODEC_ID_DVD_SUBTITLE) == "CODEC_ID_FIRST_SUBTITLE");
static_assert(nameOf(kCodecs, CODEC_ID_TTF) == "CODEC_ID_FIRST_UNKNOWN");

template <typename Table>
std::optional<int> libraryProfile(const Table& table, int ffmpegProfile) {
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const ProfileRow& r) { return r.ffmpeg == ffmpegProfile; });
  if (row == table.end()) return std::nullopt;
  return row->library;
}

std::optional<int> codecsOwnProfile(int codec, int ffmpegProfile) {
  switch (codec) {
    case CODEC_ID_AAC:
    case CODEC_ID_AAC_LATM:
      return libraryProfile(kAacProfiles, ffmpegProfile);
    case CODEC_ID_DTS:
      return libraryProfile(kDtsProfiles, ffmpegProfile);
    case CODEC_ID_MPEG2VIDEO:
    case CODEC_ID_MPEG2VIDEO_XVMC:
      return libraryProfile(kMpeg2Profiles, ffmpegProfile);
    case CODEC_ID_H264:
      return libraryProfile(kH264Profiles, ffmpegProfile);
    case CODEC_ID_VC1:
    case CODEC_ID_VC1IMAGE:
      return libraryProfile(kVc1Profiles, ffmpegProfile);
    default:
      return std::nullopt;
  }
}

std::string_view profileFamily(int codec) {
  switch (codec) {
    case CODEC_ID_VC1:
    case CODEC_ID_VC1IMAGE:
      return "PROFILE_VC1";
    case CODEC_ID_MPEG4:
      return "PROFILE_MPEG4";
    case CODEC_ID_MPEG2VIDEO:
    case CODEC_ID_MPEG2VIDEO_XVMC:
      return "PROFILE_MPEG2";
    case CODEC_ID_H264:
      return "PROFILE_H264";
    case CODEC_ID_AAC:
    case CODEC_ID_AAC_LATM:
      return "PROFILE_AAC";
    case CODEC_ID_DTS:
      return "PROFILE_DTS";
    default:
      return "UNKNOWN";
  }
}

}  // namespace

std::optional<int> formatOfName(const char* name) {
  return idOf(kFormats, name);
}

std::optional<int> brandOfName(const char* name) {
  return idOf(kBrands, name);
}

std::optional<int> codecOfName(const char* name) {
  return idOf(kCodecs, name);
}

std::optional<int> profileOfName(const char* name) {
  return idOf(kProfiles, name);
}

std::optional<int> playExceptionOfName(const char* name) {
  return idOf(kPlayExceptions, name);
}

std::optional<std::string_view> formatName(int format) {
  return nameOf(kFormats, format);
}

std::optional<std::string_view> brandName(int brand) {
  return nameOf(kBrands, brand);
}

std::optional<std::string_view> songExtension(int containerFormat) {
  // Identifiers below the number of formats carry no brand; negative ones are treated alike, and
  // are unknown.
  const int format = containerFormat < static_cast<int>(kFormats.size())
                         ? containerFormat
                         : static_cast<int>(static_cast<unsigned>(containerFormat) & kFormatMask);
  return nameOf(kAudioAttachedNames, format);
}

std::optional<std::string_view> codecName(int codec) {
  return nameOf(kCodecs, codec);
}

std::string_view profileFamilyName(int profile, int codec) {
  return profile > 0 ? profileFamily(codec) : "UNKNOWN";
}

int codecOfFfmpeg(int ffmpegCodec) {
  if (ffmpegCodec == 0) return CODEC_ID_NONE;
  for (const CodecRun& run : kCodecRuns)
    if (ffmpegCodec >= run.ffmpeg && ffmpegCodec < run.ffmpeg + run.count)
      return run.library + (ffmpegCodec - run.ffmpeg);
  return -1;
}

int profileOfFfmpeg(int codec, int ffmpegProfile) {
  if (ffmpegProfile == PROFILE_RESERVED || ffmpegProfile == PROFILE_UNKNOWN) return ffmpegProfile;
  if (const auto own = codecsOwnProfile(codec, ffmpegProfile)) return *own;
  if (ffmpegProfile >= 0 && ffmpegProfile < static_cast<int>(kMpeg4Profiles.size()))
    return kMpeg4Profiles[static_cast<std::size_t>(ffmpegProfile)];
  return PROFILE_UNKNOWN;
}

}  // namespace kolum::media
