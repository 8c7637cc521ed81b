# Written by scripts/make-pages.sh from the tables in src/describe.
"""The classes of documents. docs/document.md describes every key."""

from __future__ import annotations

from dataclasses import dataclass

from ._base import Base, Container, Identifier


@dataclass(frozen=True, kw_only=True)
class DocumentWarnings:
    """"warnings" of a document."""

    code: str | None = None
    """The cause, for programs; values may be added."""
    reason: str | None = None
    """The cause in words, for people."""


@dataclass(frozen=True, kw_only=True)
class DocumentError:
    """"error" of a document."""

    code: str | None = None
    """The cause, for programs; values may be added."""
    reason: str | None = None
    """The cause in words, for people."""


@dataclass(frozen=True, kw_only=True)
class Document(Base):
    """What every file has."""

    file: str | None = None
    """Path as given, or as found below a given folder; bytes that are not UTF-8 are U+FFFD."""
    file_bytes: str | None = None
    """The path percent-encoded, only when it is not UTF-8."""
    size: int | None = None
    """Size of the file (bytes)."""
    content_type: str | None = None
    """MIME type that its first bytes say."""
    modified: str | None = None
    """When the file was last changed."""
    fingerprint: str | None = None
    """On request: SHA-256 of the size (8 bytes, the lowest first) and of the first and last 64 KiB."""
    kind: Identifier | None = None
    """music, video or photo."""
    container_format: Container | None = None
    """The container."""
    mime_type: str | None = None
    """MIME type, as servers announce it."""
    dlna_profile: str | None = None
    """DLNA media format profile."""
    duration: float | None = None
    """How long it plays (seconds)."""
    bit_rate: int | None = None
    """Of the whole file (bit/s)."""
    warnings: tuple[DocumentWarnings, ...] = ()
    """What is odd about the file."""
    error: DocumentError | None = None
    """Why a file gave no result, or not all of it."""


@dataclass(frozen=True, kw_only=True)
class VideoCamera:
    """"camera" of a document."""

    make: str | None = None
    """Maker."""
    model: str | None = None
    """Model."""


@dataclass(frozen=True, kw_only=True)
class VideoPosition:
    """"position" of a document."""

    latitude: float | None = None
    """North positive (degrees)."""
    longitude: float | None = None
    """East positive (degrees)."""
    altitude: float | None = None
    """Above the sea (metres)."""


@dataclass(frozen=True, kw_only=True)
class VideoTitlesChapters:
    """"chapters" of a document."""

    start: float | None = None
    """From the beginning of the title (seconds)."""


@dataclass(frozen=True, kw_only=True)
class VideoTitles:
    """"titles" of a document."""

    number: int | None = None
    """From 1, in the order of a DVD's list of titles, or of a Blu-ray disc's playlists."""
    source: str | None = None
    """The index file that describes it: 'VTS_01_0.IFO', '00001.mpls'."""
    duration: float | None = None
    """How long it plays (seconds)."""
    chapter_count: int | None = None
    """How many chapters it has."""
    chapters: tuple[VideoTitlesChapters, ...] = ()
    """Where they begin."""
    angles: int | None = None
    """From how many angles it can be seen."""
    audio_languages: tuple[str, ...] = ()
    """For each sound, as stored: 'en' on DVDs, 'eng' on Blu-ray discs; 'und' if not stated."""
    subtitle_languages: tuple[str, ...] = ()
    """The same for its subtitles."""


@dataclass(frozen=True, kw_only=True)
class VideoPlace:
    """"place" of a document."""

    name: str | None = None
    """City, town or suburb."""
    region: str | None = None
    """State or province."""
    country: str | None = None
    """Country."""
    country_code: str | None = None
    """Two capitals, as ISO 3166-1 has them."""
    distance: int | None = None
    """From the position to the place's centre (metres)."""
    geonames_id: int | None = None
    """GeoNames' number of the place."""


@dataclass(frozen=True, kw_only=True)
class VideoStreamsColours:
    """"colours" of a document."""

    primaries: str | None = None
    """FFmpeg's name: 'bt2020'."""
    transfer: str | None = None
    """FFmpeg's name: 'smpte2084'."""
    matrix: str | None = None
    """FFmpeg's name: 'bt2020nc'."""
    range: str | None = None
    """'tv' (limited) or 'pc' (full)."""
    chroma_location: str | None = None
    """FFmpeg's name: 'left'."""


@dataclass(frozen=True, kw_only=True)
class VideoStreamsContentLight:
    """"contentLight" of a document."""

    highest: int | None = None
    """Of any pixel, cd/m²."""
    highest_average: int | None = None
    """Of any picture, cd/m²."""


@dataclass(frozen=True, kw_only=True)
class VideoStreamsMasteringLuminance:
    """"masteringLuminance" of a document."""

    lowest: float | None = None
    """cd/m²."""
    highest: float | None = None
    """cd/m²."""


@dataclass(frozen=True, kw_only=True)
class VideoStreamsDolbyVision:
    """"dolbyVision" of a document."""

    profile: int | None = None
    """Profile."""
    level: int | None = None
    """Level."""
    compatibility: int | None = None
    """What others see: 0 nothing, 1 HDR10, 2 SDR, 4 HLG, 6 Blu-ray HDR10."""
    enhancement_layer: bool | None = None
    """Whether there is one."""


@dataclass(frozen=True, kw_only=True)
class VideoStreamsSpherical:
    """"spherical" of a document."""

    projection: str | None = None
    """FFmpeg's name: 'equirectangular'."""
    yaw: float | None = None
    """Where the camera looks (degrees)."""
    pitch: float | None = None
    """Where the camera looks (degrees)."""
    roll: float | None = None
    """Where the camera looks (degrees)."""


@dataclass(frozen=True, kw_only=True)
class VideoStreams:
    """"streams" of a document."""

    type: str | None = None
    """'video', 'audio', 'subtitle', 'picture' (attached), 'attachment' or 'data'."""
    index: int | None = None
    """Number in the file, from 0."""
    id: int | None = None
    """The container's own number, such as a PID."""
    codec: Identifier | None = None
    """CODEC_ID_*."""
    codec_name: str | None = None
    """FFmpeg's name."""
    codec_tag: str | None = None
    """Four characters, such as 'avc1'."""
    profile: Identifier | None = None
    """PROFILE_*."""
    profile_name: str | None = None
    """FFmpeg's name."""
    level: int | None = None
    """FFmpeg's number."""
    language: str | None = None
    """As stored, mostly ISO 639-2."""
    title: str | None = None
    """Title."""
    marks: tuple[str, ...] = ()
    """'default', 'forced', 'hearing impaired', ...."""
    duration: float | None = None
    """Of this stream (seconds)."""
    frames: int | None = None
    """Number of frames, as stored."""
    bit_rate: int | None = None
    """Of this stream (bit/s)."""
    width: int | None = None
    """As stored (pixels)."""
    height: int | None = None
    """As stored (pixels)."""
    sample_aspect: str | None = None
    """Shape of a pixel: '64:45'."""
    frame_rate: str | None = None
    """Exact: '24000/1001'."""
    average_frame_rate: str | None = None
    """Frames by duration, exact."""
    field_order: str | None = None
    """'progressive', 'top first', ...."""
    pixel_format: str | None = None
    """FFmpeg's name: 'yuv420p10le'."""
    bit_depth: int | None = None
    """Bits of each component."""
    chroma: str | None = None
    """'4:2:0', ...."""
    alpha: bool | None = None
    """Whether it has transparency."""
    colours: VideoStreamsColours | None = None
    """How to show its numbers."""
    dynamic_range: tuple[str, ...] = ()
    """'HDR10', 'HDR10+', 'HLG', 'Dolby Vision', 'PQ'."""
    content_light: VideoStreamsContentLight | None = None
    """MaxCLL and MaxFALL."""
    mastering_luminance: VideoStreamsMasteringLuminance | None = None
    """Of the display that it was graded on."""
    dolby_vision: VideoStreamsDolbyVision | None = None
    """Dolby Vision."""
    closed_captions: bool | None = None
    """Whether the pictures carry them."""
    rotation: float | None = None
    """To be turned clockwise (degrees)."""
    mirrored: bool | None = None
    """To be mirrored before."""
    spherical: VideoStreamsSpherical | None = None
    """How it maps a sphere."""
    stereo: str | None = None
    """'side by side', ...."""
    channels: int | None = None
    """Audio channels."""
    layout: str | None = None
    """FFmpeg's name: '5.1(side)'."""
    sample_rate: int | None = None
    """Samples per second (Hz)."""
    bits_per_sample: int | None = None
    """Of lossless sound."""
    sample_format: str | None = None
    """FFmpeg's name: 'fltp'."""
    subtitle_kind: str | None = None
    """'text' or 'picture'."""
    file_name: str | None = None
    """Of an attachment."""
    mime_type: str | None = None
    """Of an attachment."""
    timecode: str | None = None
    """Of the first picture: '01:00:00:00'."""
    encoder: str | None = None
    """The program that made it."""
    handler: str | None = None
    """MP4's name of the track's kind."""


@dataclass(frozen=True, kw_only=True)
class VideoChapters:
    """"chapters" of a document."""

    start: float | None = None
    """From the beginning (seconds)."""
    end: float | None = None
    """From the beginning (seconds)."""
    title: str | None = None
    """Title."""


@dataclass(frozen=True, kw_only=True)
class VideoPrograms:
    """"programs" of a document."""

    number: int | None = None
    """Number."""
    name: str | None = None
    """Name of the channel."""
    provider: str | None = None
    """Who broadcasts it."""


@dataclass(frozen=True, kw_only=True)
class Video(Document):
    """A film, a recording, a disc."""

    title: str | None = None
    """Title."""
    artist: str | None = None
    """Artist; several are joined by '; '."""
    artists: tuple[str, ...] = ()
    """Artists, if there are several."""
    show: str | None = None
    """The series."""
    season: int | None = None
    """0 has the specials."""
    episode: int | None = None
    """Number of the episode."""
    episode_id: str | None = None
    """As stored: 'S01E02'."""
    network: str | None = None
    """That broadcast it."""
    genre: str | None = None
    """Genre, as artist."""
    genres: tuple[str, ...] = ()
    """If there are several."""
    description: str | None = None
    """Short."""
    synopsis: str | None = None
    """Long."""
    comment: str | None = None
    """Comment."""
    copyright: str | None = None
    """Copyright."""
    directors: tuple[str, ...] = ()
    """Directors."""
    actors: tuple[str, ...] = ()
    """Actors."""
    year: int | None = None
    """Year of the date."""
    date: str | None = None
    """As tagged; of films mostly the release."""
    created: str | None = None
    """When it was filmed, or the file made."""
    created_zone: str | None = None
    """How sure that moment is: 'explicit' (its offset is stated), 'utc' (by the container's definition) or 'local' (nothing says where)."""
    camera: VideoCamera | None = None
    """Camera."""
    software: str | None = None
    """In the camera, or that edited the film."""
    android_version: str | None = None
    """Of the phone."""
    position: VideoPosition | None = None
    """Where."""
    place_name: str | None = None
    """Where, in words."""
    content_identifier: str | None = None
    """Equal in a live photo's picture and film."""
    live_photo: bool | None = None
    """Whether it is the film of one."""
    encoder: str | None = None
    """The program that wrote the container."""
    width: int | None = None
    """As stored (pixels)."""
    height: int | None = None
    """As stored (pixels)."""
    sample_aspect_num: int | None = None
    """Shape of a pixel, numerator."""
    sample_aspect_den: int | None = None
    """Shape of a pixel, denominator."""
    display_aspect_num: int | None = None
    """Shape of the picture, numerator."""
    display_aspect_den: int | None = None
    """Shape of the picture, denominator."""
    frame_rate: float | None = None
    """The lowest that fits all time stamps (frames per second)."""
    orientation: int | None = None
    """Turned by 180 (3), 270 (6) or 90 (8) degrees."""
    is360: bool | None = None
    """Whether it is an equirectangular video."""
    video_codec: Identifier | None = None
    """CODEC_ID_*."""
    video_profile: Identifier | None = None
    """PROFILE_*, by the name specific to the codec where there is one."""
    video_level: int | None = None
    """FFmpeg's level number: 41 for H.264 level 4.1."""
    video_bit_rate: int | None = None
    """Of the video alone (bit/s)."""
    play_exception: Identifier | None = None
    """PLAY_EXCEPTION_*."""
    creation_time: int | None = None
    """When it was recorded (seconds since 1970)."""
    creation_year: int | None = None
    """Year."""
    year_month: str | None = None
    """Year and month."""
    creation_date: str | None = None
    """Date."""
    content_identifier: str | None = None
    """QuickTime content identifier."""
    audio_codec: Identifier | None = None
    """CODEC_ID_*."""
    audio_profile: Identifier | None = None
    """PROFILE_*, by the name specific to the codec where there is one."""
    audio_class: Identifier | None = None
    """AUDIO_CLASS_*, the class of audio in DLNA names."""
    audio_level: int | None = None
    """FFmpeg's level number."""
    audio_bit_rate: int | None = None
    """Of the sound (bit/s)."""
    sample_rate: int | None = None
    """Samples per second (Hz)."""
    bits_per_sample: int | None = None
    """Bits per coded sample, or per sample of lossless sound."""
    channels: int | None = None
    """Number of audio channels."""
    subtitle_count: int | None = None
    """Subtitle streams of a DVD or Blu-ray folder."""
    titles: tuple[VideoTitles, ...] = ()
    """What a DVD or Blu-ray disc can play."""
    main_title: int | None = None
    """The number of the main title, which all else about a folder is about."""
    main_title_reason: str | None = None
    """Why it is the main one, in words."""
    place: VideoPlace | None = None
    """On request: the known place that is nearest to the position, if one is within 100 km."""
    streams: tuple[VideoStreams, ...] = ()
    """All streams, in their order."""
    chapters: tuple[VideoChapters, ...] = ()
    """Chapters, also of audio books."""
    programs: tuple[VideoPrograms, ...] = ()
    """Channels of a transport stream."""


@dataclass(frozen=True, kw_only=True)
class SongPerformers:
    """"performers" of a document."""

    name: str | None = None
    """Who."""
    role: str | None = None
    """Instrument or task."""


@dataclass(frozen=True, kw_only=True)
class SongReplayGain:
    """"replayGain" of a document."""

    track_gain: float | None = None
    """To ReplayGain's loudness (dB)."""
    track_peak: float | None = None
    """1 is full scale."""
    album_gain: float | None = None
    """The same for the album (dB)."""
    album_peak: float | None = None
    """The same for the album."""


@dataclass(frozen=True, kw_only=True)
class SongMusicBrainz:
    """"musicBrainz" of a document."""

    recording: str | None = None
    """Of the recording."""
    track: str | None = None
    """Of the recording on this album."""
    release: str | None = None
    """Of the album."""
    release_group: str | None = None
    """Of all editions of the album."""
    work: str | None = None
    """Of the composition."""
    artists: tuple[str, ...] = ()
    """Of the artists."""
    album_artists: tuple[str, ...] = ()
    """Of the album's artists."""


@dataclass(frozen=True, kw_only=True)
class SongCovers:
    """"covers" of a document."""

    mime_type: str | None = None
    """MIME type."""
    type: str | None = None
    """What it shows: 'front cover'."""
    description: str | None = None
    """In words."""
    bytes: int | None = None
    """Its size (bytes)."""
    width: int | None = None
    """Width (pixels)."""
    height: int | None = None
    """Height (pixels)."""


@dataclass(frozen=True, kw_only=True)
class SongStreamsColours:
    """"colours" of a document."""

    primaries: str | None = None
    """FFmpeg's name: 'bt2020'."""
    transfer: str | None = None
    """FFmpeg's name: 'smpte2084'."""
    matrix: str | None = None
    """FFmpeg's name: 'bt2020nc'."""
    range: str | None = None
    """'tv' (limited) or 'pc' (full)."""
    chroma_location: str | None = None
    """FFmpeg's name: 'left'."""


@dataclass(frozen=True, kw_only=True)
class SongStreamsContentLight:
    """"contentLight" of a document."""

    highest: int | None = None
    """Of any pixel, cd/m²."""
    highest_average: int | None = None
    """Of any picture, cd/m²."""


@dataclass(frozen=True, kw_only=True)
class SongStreamsMasteringLuminance:
    """"masteringLuminance" of a document."""

    lowest: float | None = None
    """cd/m²."""
    highest: float | None = None
    """cd/m²."""


@dataclass(frozen=True, kw_only=True)
class SongStreamsDolbyVision:
    """"dolbyVision" of a document."""

    profile: int | None = None
    """Profile."""
    level: int | None = None
    """Level."""
    compatibility: int | None = None
    """What others see: 0 nothing, 1 HDR10, 2 SDR, 4 HLG, 6 Blu-ray HDR10."""
    enhancement_layer: bool | None = None
    """Whether there is one."""


@dataclass(frozen=True, kw_only=True)
class SongStreamsSpherical:
    """"spherical" of a document."""

    projection: str | None = None
    """FFmpeg's name: 'equirectangular'."""
    yaw: float | None = None
    """Where the camera looks (degrees)."""
    pitch: float | None = None
    """Where the camera looks (degrees)."""
    roll: float | None = None
    """Where the camera looks (degrees)."""


@dataclass(frozen=True, kw_only=True)
class SongStreams:
    """"streams" of a document."""

    type: str | None = None
    """'video', 'audio', 'subtitle', 'picture' (attached), 'attachment' or 'data'."""
    index: int | None = None
    """Number in the file, from 0."""
    id: int | None = None
    """The container's own number, such as a PID."""
    codec: Identifier | None = None
    """CODEC_ID_*."""
    codec_name: str | None = None
    """FFmpeg's name."""
    codec_tag: str | None = None
    """Four characters, such as 'avc1'."""
    profile: Identifier | None = None
    """PROFILE_*."""
    profile_name: str | None = None
    """FFmpeg's name."""
    level: int | None = None
    """FFmpeg's number."""
    language: str | None = None
    """As stored, mostly ISO 639-2."""
    title: str | None = None
    """Title."""
    marks: tuple[str, ...] = ()
    """'default', 'forced', 'hearing impaired', ...."""
    duration: float | None = None
    """Of this stream (seconds)."""
    frames: int | None = None
    """Number of frames, as stored."""
    bit_rate: int | None = None
    """Of this stream (bit/s)."""
    width: int | None = None
    """As stored (pixels)."""
    height: int | None = None
    """As stored (pixels)."""
    sample_aspect: str | None = None
    """Shape of a pixel: '64:45'."""
    frame_rate: str | None = None
    """Exact: '24000/1001'."""
    average_frame_rate: str | None = None
    """Frames by duration, exact."""
    field_order: str | None = None
    """'progressive', 'top first', ...."""
    pixel_format: str | None = None
    """FFmpeg's name: 'yuv420p10le'."""
    bit_depth: int | None = None
    """Bits of each component."""
    chroma: str | None = None
    """'4:2:0', ...."""
    alpha: bool | None = None
    """Whether it has transparency."""
    colours: SongStreamsColours | None = None
    """How to show its numbers."""
    dynamic_range: tuple[str, ...] = ()
    """'HDR10', 'HDR10+', 'HLG', 'Dolby Vision', 'PQ'."""
    content_light: SongStreamsContentLight | None = None
    """MaxCLL and MaxFALL."""
    mastering_luminance: SongStreamsMasteringLuminance | None = None
    """Of the display that it was graded on."""
    dolby_vision: SongStreamsDolbyVision | None = None
    """Dolby Vision."""
    closed_captions: bool | None = None
    """Whether the pictures carry them."""
    rotation: float | None = None
    """To be turned clockwise (degrees)."""
    mirrored: bool | None = None
    """To be mirrored before."""
    spherical: SongStreamsSpherical | None = None
    """How it maps a sphere."""
    stereo: str | None = None
    """'side by side', ...."""
    channels: int | None = None
    """Audio channels."""
    layout: str | None = None
    """FFmpeg's name: '5.1(side)'."""
    sample_rate: int | None = None
    """Samples per second (Hz)."""
    bits_per_sample: int | None = None
    """Of lossless sound."""
    sample_format: str | None = None
    """FFmpeg's name: 'fltp'."""
    subtitle_kind: str | None = None
    """'text' or 'picture'."""
    file_name: str | None = None
    """Of an attachment."""
    mime_type: str | None = None
    """Of an attachment."""
    timecode: str | None = None
    """Of the first picture: '01:00:00:00'."""
    encoder: str | None = None
    """The program that made it."""
    handler: str | None = None
    """MP4's name of the track's kind."""


@dataclass(frozen=True, kw_only=True)
class SongChapters:
    """"chapters" of a document."""

    start: float | None = None
    """From the beginning (seconds)."""
    end: float | None = None
    """From the beginning (seconds)."""
    title: str | None = None
    """Title."""


@dataclass(frozen=True, kw_only=True)
class SongPrograms:
    """"programs" of a document."""

    number: int | None = None
    """Number."""
    name: str | None = None
    """Name of the channel."""
    provider: str | None = None
    """Who broadcasts it."""


@dataclass(frozen=True, kw_only=True)
class Song(Document):
    """A song, an audio book."""

    audio_codec: Identifier | None = None
    """CODEC_ID_*."""
    audio_profile: Identifier | None = None
    """PROFILE_*, by the name specific to the codec where there is one."""
    audio_class: Identifier | None = None
    """AUDIO_CLASS_*, the class of audio in DLNA names."""
    audio_level: int | None = None
    """FFmpeg's level number."""
    audio_bit_rate: int | None = None
    """Of the sound (bit/s)."""
    sample_rate: int | None = None
    """Samples per second (Hz)."""
    bits_per_sample: int | None = None
    """Bits per coded sample, or per sample of lossless sound."""
    channels: int | None = None
    """Number of audio channels."""
    title: str | None = None
    """Title."""
    artist: str | None = None
    """Artist; several are joined by '; '."""
    artists: tuple[str, ...] = ()
    """Artists, if there are several."""
    album: str | None = None
    """Album."""
    album_artist: str | None = None
    """Artist of the album, as artist."""
    album_artists: tuple[str, ...] = ()
    """If there are several."""
    composer: str | None = None
    """Composer, as artist."""
    composers: tuple[str, ...] = ()
    """If there are several."""
    genre: str | None = None
    """Genre, as artist."""
    genres: tuple[str, ...] = ()
    """If there are several."""
    conductors: tuple[str, ...] = ()
    """Conductors."""
    lyricists: tuple[str, ...] = ()
    """Writers of the text."""
    performers: tuple[SongPerformers, ...] = ()
    """Everyone else."""
    track: int | None = None
    """Number on the disc."""
    track_total: int | None = None
    """Tracks of the disc."""
    disc: int | None = None
    """Number of the disc."""
    disc_total: int | None = None
    """Discs of the album."""
    year: int | None = None
    """Year of the date."""
    date: str | None = None
    """Date, as far as known."""
    original_date: str | None = None
    """Of the first release."""
    release_date: str | None = None
    """Of this release, besides the date."""
    comment: str | None = None
    """Comment, as artist."""
    has_lyrics: bool | None = None
    """Whether the text is in the file."""
    lyrics_language: str | None = None
    """Language of that text, as stored."""
    languages: tuple[str, ...] = ()
    """Languages that are sung, as stored."""
    title_sort: str | None = None
    """Title to sort by."""
    album_sort: str | None = None
    """Album to sort by."""
    artist_sort: str | None = None
    """Artist to sort by, as artist."""
    album_artist_sort: str | None = None
    """Artist of the album to sort by."""
    composer_sort: str | None = None
    """Composer to sort by."""
    compilation: bool | None = None
    """Whether the album has several artists."""
    gapless: bool | None = None
    """Whether no gap belongs between songs."""
    podcast: bool | None = None
    """Whether it is a podcast."""
    tag_rating: int | None = None
    """0 to 100."""
    beats_per_minute: float | None = None
    """Tempo."""
    musical_key: str | None = None
    """As stored: 'Am'."""
    moods: tuple[str, ...] = ()
    """Moods."""
    replay_gain: SongReplayGain | None = None
    """How loud it is."""
    music_brainz: SongMusicBrainz | None = None
    """Identifiers of MusicBrainz."""
    acoust_id: str | None = None
    """Identifier of the sound."""
    isrcs: tuple[str, ...] = ()
    """Numbers of the recording."""
    labels: tuple[str, ...] = ()
    """Companies."""
    catalog_numbers: tuple[str, ...] = ()
    """Their numbers of the album."""
    barcode: str | None = None
    """Of the album."""
    copyright: str | None = None
    """Copyright."""
    encoder: str | None = None
    """The program that made the sound."""
    encoded_by: str | None = None
    """Who used it."""
    covers: tuple[SongCovers, ...] = ()
    """Pictures in the file."""
    streams: tuple[SongStreams, ...] = ()
    """All streams, in their order."""
    chapters: tuple[SongChapters, ...] = ()
    """Chapters, also of audio books."""
    programs: tuple[SongPrograms, ...] = ()
    """Channels of a transport stream."""


@dataclass(frozen=True, kw_only=True)
class PhotoCamera:
    """"camera" of a document."""

    make: str | None = None
    """Maker."""
    model: str | None = None
    """Model, without the maker."""
    serial: str | None = None
    """Serial number."""


@dataclass(frozen=True, kw_only=True)
class PhotoLens:
    """"lens" of a document."""

    make: str | None = None
    """Maker."""
    model: str | None = None
    """Model, without the maker."""
    serial: str | None = None
    """Serial number."""


@dataclass(frozen=True, kw_only=True)
class PhotoFlash:
    """"flash" of a document."""

    fired: bool | None = None
    """Whether it fired."""
    value: int | None = None
    """Exif's bits."""


@dataclass(frozen=True, kw_only=True)
class PhotoPosition:
    """"position" of a document."""

    latitude: float | None = None
    """North positive (degrees)."""
    longitude: float | None = None
    """East positive (degrees)."""
    altitude: float | None = None
    """Above the sea (metres)."""
    accuracy: float | None = None
    """Possible error (metres)."""
    direction: float | None = None
    """Of view, clockwise from north (degrees)."""
    north: str | None = None
    """'true' or 'magnetic'."""
    time: str | None = None
    """When it was measured."""


@dataclass(frozen=True, kw_only=True)
class PhotoAddress:
    """"address" of a document."""

    location: str | None = None
    """Part of a city, or a place outside."""
    city: str | None = None
    """City."""
    state: str | None = None
    """State or province."""
    country: str | None = None
    """Country."""
    country_code: str | None = None
    """As stored."""


@dataclass(frozen=True, kw_only=True)
class PhotoPeople:
    """"people" of a document."""

    name: str | None = None
    """Who or what."""
    type: str | None = None
    """'Face', 'Pet', ...."""
    centre_x: float | None = None
    """Part of the stored width."""
    centre_y: float | None = None
    """Part of the stored height."""
    width: float | None = None
    """Part of the stored width."""
    height: float | None = None
    """Part of the stored height."""


@dataclass(frozen=True, kw_only=True)
class PhotoPlace:
    """"place" of a document."""

    name: str | None = None
    """City, town or suburb."""
    region: str | None = None
    """State or province."""
    country: str | None = None
    """Country."""
    country_code: str | None = None
    """Two capitals, as ISO 3166-1 has them."""
    distance: int | None = None
    """From the position to the place's centre (metres)."""
    geonames_id: int | None = None
    """GeoNames' number of the place."""


@dataclass(frozen=True, kw_only=True)
class Photo(Document):
    """A photo."""

    picture_format: int | None = None
    """What a photo's extension implies."""
    width: int | None = None
    """As stored (pixels)."""
    height: int | None = None
    """As stored (pixels)."""
    pixel_format: int | None = None
    """The pixel format's number in FFmpeg 57, whatever release is linked; left out for a later format."""
    pixel_format_name: str | None = None
    """FFmpeg's name of the pixel format, such as 'yuv420p'."""
    is_album_cover: bool | None = None
    """Whether a photo's name is that of an album picture."""
    shown_width: int | None = None
    """As to be viewed (pixels)."""
    shown_height: int | None = None
    """As to be viewed (pixels)."""
    taken: str | None = None
    """When, by the camera's clock."""
    taken_offset_from: str | None = None
    """Where the offset of that time comes from: 'stated', 'other time' (of this photo), 'maker note' or 'GPS'."""
    digitized: str | None = None
    """When it became a file."""
    edited: str | None = None
    """When its content was last changed."""
    camera: PhotoCamera | None = None
    """Camera."""
    lens: PhotoLens | None = None
    """Lens."""
    software: str | None = None
    """In the camera, or that edited the photo."""
    exposure_time: float | None = None
    """Exposure (seconds)."""
    aperture: float | None = None
    """f-number."""
    iso: int | None = None
    """Sensitivity."""
    exposure_bias: float | None = None
    """EV."""
    exposure_program: str | None = None
    """'aperture priority', ...."""
    metering: str | None = None
    """'spot', ...."""
    white_balance: str | None = None
    """'automatic' or 'manual'."""
    focal_length: float | None = None
    """Of the lens (millimetres)."""
    focal_length35: float | None = None
    """For the same view on 35 mm film (millimetres)."""
    flash: PhotoFlash | None = None
    """Flash."""
    rotation: int | None = None
    """To be turned clockwise for viewing (degrees)."""
    mirrored: bool | None = None
    """To be mirrored before."""
    colour_profile: str | None = None
    """Colour profile."""
    position: PhotoPosition | None = None
    """Where."""
    address: PhotoAddress | None = None
    """Where, in words."""
    title: str | None = None
    """Title."""
    headline: str | None = None
    """Headline."""
    caption: str | None = None
    """Description."""
    keywords: tuple[str, ...] = ()
    """Keywords."""
    keyword_paths: tuple[str, ...] = ()
    """'Places|Alps|Eiger'."""
    rating: int | None = None
    """Stars, 0 to 5; -1 is rejected."""
    label: str | None = None
    """Label."""
    creators: tuple[str, ...] = ()
    """Photographers."""
    copyright: str | None = None
    """Copyright."""
    credit: str | None = None
    """To be named with the photo."""
    people: tuple[PhotoPeople, ...] = ()
    """People and other things in the picture."""
    burst: str | None = None
    """Equal in all photos of a burst."""
    content_identifier: str | None = None
    """Equal in a live photo's picture and film."""
    motion_photo: int | None = None
    """From the end of the file to the film in it (bytes)."""
    place: PhotoPlace | None = None
    """On request: the known place that is nearest to the position, if one is within 100 km."""
