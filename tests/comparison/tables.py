"""What is compared with what, and what is left out, and why.

SAME       the document's key, and the keys of other programs that say the same. Each value that
           they show must be in the document, and must agree (agreement.py says when).
DIFFERENT  values that have a key in the document, but do not agree, with the reason. A row whose
           values agree fails the test: it belongs into SAME then, or needs a "?".
LEFT_OUT   values that a document does not hold, with the reason.

The keys of other programs are separated by spaces; readings.py says how they are written. "*"
stands for anything. "?" in front of a key: not every release shows it (or differs), so it need not
be found. Any other key must be found in at least one of the files. FILES are names of files, or a pattern.
The first row that matches a value counts, DIFFERENT before SAME before LEFT_OUT.

docs/comparison.md is made from these tables (scripts/make-comparison.sh).
"""

from typing import NamedTuple

import agreement as by


class Same(NamedTuple):
    key: str  # several are separated by spaces: the value must agree with these taken together
    how: object = by.text
    ExifTool: str = ""
    MediaInfo: str = ""
    ffprobe: str = ""
    Mutagen: str = ""
    files: str = "*"


class Different(NamedTuple):
    key: str
    reason: str
    how: object = by.text
    ExifTool: str = ""
    MediaInfo: str = ""
    ffprobe: str = ""
    Mutagen: str = ""
    files: str = "*"


class LeftOut(NamedTuple):
    reason: str
    ExifTool: str = ""
    MediaInfo: str = ""
    ffprobe: str = ""
    Mutagen: str = ""
    files: str = "*"


SONGS = "song.*"
FILMS = "film.* phone.mov"
PHOTOS = "photo.*"

SAME = (
    # --- Every file
    Same("size", by.number, "System:FileSize", "General.FileSize", "format.size"),
    Same("modified", by.moment, "System:FileModifyDate",
         "General.File_Modified_Date General.File_Modified_Date_Local"),
    Same("contentType", by.text, "File:MIMEType",
         files="film.* phone.mov song.* photo.jpg photo.heic"),
    Same("duration", by.rounded, "QuickTime:Duration", "General.Duration",
         "format.duration", "info.length", files="film.* phone.mov song.flac song.mp3"),
    Same("duration", by.rounded, "Composite:Duration", files="song.flac"),
    Same("bitRate", by.rounded, "", "General.OverallBitRate", "format.bit_rate",
         files="film.* phone.mov song.*"),
    # --- Words
    Same("title", by.text,
         "ItemList:Title Matroska:Title Keys:Title Vorbis:Title ID3v2_4:Title XMP-dc:Title "
         "IPTC:ObjectName",
         "General.Title General.Track General.Movie General.extra.com_apple_quicktime_title",
         "format.tags.title format.tags.com.apple.quicktime.title",
         "tags.\xa9nam tags.title tags.TIT2"),
    Same("artist", by.text, "ItemList:Artist Matroska:Artist",
         "General.Performer General.extra.ARTIST", "format.tags.artist", "tags.\xa9ART",
         files="film.*"),
    Same("artists", by.texts, "Vorbis:Artist ID3v2_4:Artist", "", "", "tags.artist tags.TPE1",
         files=SONGS),
    Same("artists", by.texts, ffprobe="format.tags.artist", files="song.flac"),
    Same("artists", by.one_of, "", "General.Performer", "format.tags.artist", files="song.mp3"),
    Same("show", by.text, "ItemList:TVShow", "General.Collection", "format.tags.show", "tags.tvsh"),
    Same("season", by.number, "ItemList:TVSeason", "General.Season", "format.tags.season_number",
         "tags.tvsn"),
    Same("episode", by.number, "ItemList:TVEpisode", "General.Part", "format.tags.episode_sort",
         "tags.tves", files="film.mp4"),
    Same("episodeId", by.text, "ItemList:TVEpisodeID", "General.extra.Part_ID",
         "format.tags.episode_id", "tags.tven"),
    Same("network", by.text, "ItemList:TVNetworkName", "General.extra.TVNetworkName",
         "format.tags.network", "tags.tvnn"),
    Same("genre", by.text, "ItemList:Genre Matroska:Genre", "General.Genre General.extra.GENRE",
         "format.tags.genre", "tags.\xa9gen", files="film.*"),
    Same("genres", by.texts, "", "General.Genre", "format.tags.genre", "tags.genre",
         files="song.flac"),
    Same("genres", by.texts, "ID3v2_4:Genre", "", "", "tags.TCON", files="song.mp3"),
    Same("genres", by.one_of, "Vorbis:Genre", files="song.flac"),
    Same("genres", by.one_of, "", "General.Genre", "format.tags.genre", files="song.mp3"),
    Same("description", by.text, "ItemList:Description Matroska:Description Keys:Description",
         "General.Description",
         "format.tags.description format.tags.com.apple.quicktime.description", "tags.desc"),
    Same("synopsis", by.text, "ItemList:LongDescription Matroska:Synopsis",
         "General.extra.LongDescription General.extra.SYNOPSIS", "format.tags.synopsis",
         "tags.ldes"),
    Same("comment", by.text, "ItemList:Comment Matroska:Comment Vorbis:Comment ID3v2_4:Comment",
         "General.Comment", "format.tags.comment", "tags.\xa9cmt tags.comment tags.COMM::eng"),
    Same("copyright", by.text,
         "ItemList:Copyright Matroska:Copyright Vorbis:Copyright ID3v2_4:Copyright "
         "IFD0:Copyright XMP-dc:Rights IPTC:CopyrightNotice",
         "General.Copyright", "format.tags.copyright", "tags.cprt tags.copyright tags.TCOP"),
    Same("directors", by.one_of, "Matroska:Director", "General.extra.DIRECTOR",
         "format.tags.director"),
    # --- Films: dates, places, devices
    Same("date", by.clock, "ItemList:ContentCreateDate Vorbis:Date",
         "General.Recorded_Date", "format.tags.date", "tags.\xa9day tags.date",
         files="film.mp4 song.flac"),
    Same("date", by.clock, "ID3v2_4:RecordingTime Composite:DateTimeOriginal",
         "General.Recorded_Date", "", "tags.TDRC", files="song.mp3"),
    Same("date", by.clock, "Matroska:DateReleased", "General.Released_Date",
         "format.tags.date_released", files="film.mkv"),
    Same("created", by.moment,
         "QuickTime:CreateDate Track:TrackCreateDate Track:MediaCreateDate "
         "Matroska:DateTimeOriginal Keys:CreationDate",
         "General.Encoded_Date Video.Encoded_Date Audio.Encoded_Date Text.Encoded_Date "
         "Menu.extra.Encoded_Date ?General.extra.com_apple_quicktime_creationdate "
         "?General.Recorded_Date",
         "format.tags.creation_time streams[].tags.creation_time "
         "format.tags.com.apple.quicktime.creationdate", files=FILMS),
    Same("position", by.position, "Keys:GPSCoordinates Composite:GPSPosition",
         "?General.extra.com_apple_quicktime_location_ISO6709 ?General.Recorded_Location",
         "format.tags.com.apple.quicktime.location.iso6709", files="phone.mov"),
    Same("camera.make", by.text, "Keys:Make IFD0:Make",
         "?General.extra.com_apple_quicktime_make ?General.Encoded_Hardware_CompanyName "
         "General.Encoded_Application_CompanyName", "format.tags.com.apple.quicktime.make"),
    Same("camera.model", by.text, "Keys:Model",
         "?General.extra.com_apple_quicktime_model ?General.Encoded_Hardware_Name",
         "format.tags.com.apple.quicktime.model"),
    Same("camera.model", by.text, "IFD0:Model", files="photo.jpg photo.heic"),
    Same("camera.model", by.ends, "IFD0:Model", "General.Encoded_Library_Name",
         files="photo.nef"),
    Same("software", by.text, "Keys:Software IFD0:Software",
         "?General.extra.com_apple_quicktime_software ?General.Encoded_Application_Name",
         "format.tags.com.apple.quicktime.software", files="phone.mov photo.*"),
    Same("contentIdentifier", by.text, "Keys:ContentIdentifier",
         "General.extra.com_apple_quicktime_content_identifier",
         "format.tags.com.apple.quicktime.content.identifier"),
    Same("encoder", by.text, "ItemList:Encoder Matroska:MuxingApp Matroska:WritingApp "
         "UserData:SoftwareVersion Vorbis:Encoder ID3v2_4:EncoderSettings",
         "General.Encoded_Application", "format.tags.encoder",
         "tags.\xa9too tags.encoder tags.TSSE"),
    Same("encoder", by.text, MediaInfo="General.Encoded_Library", files="film.mkv"),
    # --- Songs
    Same("album", by.text, "Vorbis:Album ID3v2_4:Album", "General.Album", "format.tags.album",
         "tags.album tags.TALB"),
    Same("albumArtist", by.text, "Vorbis:Albumartist ID3v2_4:Band", "General.Album_Performer",
         "format.tags.album_artist", "tags.albumartist tags.TPE2"),
    Same("albumArtist", by.text, MediaInfo="General.extra.Album_Composer"),
    Same("composer", by.text, "Vorbis:Composer ID3v2_4:Composer", "General.Composer",
         "format.tags.composer", "tags.composer tags.TCOM"),
    Same("conductors", by.one_of, "Vorbis:Conductor ID3v2_4:Conductor", "General.Conductor",
         "format.tags.conductor", "tags.conductor tags.TPE3"),
    Same("conductors", by.one_of, ffprobe="format.tags.performer", files="song.mp3"),
    Same("lyricists", by.one_of, "Vorbis:Lyricist ID3v2_4:Lyricist",
         "General.Lyricist General.extra.LYRICIST", "format.tags.lyricist format.tags.text",
         "tags.lyricist tags.TEXT"),
    Same("performers[]", by.role_in_brackets, "Vorbis:Performer", "General.Performer",
         "format.tags.performer", "tags.performer", files="song.flac"),
    Same("performers[]", by.pairs, "ID3v2_4:MusicianCredits ID3v2_4:InvolvedPeople", "", "",
         "tags.TMCL tags.TIPL"),
    Same("performers[]", by.one_role, "", "General.ThanksTo General.extra.Musician_Credit_List",
         "format.tags.tmcl format.tags.tipl"),
    Same("performers[].name", by.text, "ID3v2_4:InterpretedBy", "General.RemixedBy",
         "format.tags.tpe4", "tags.TPE4"),
    Same("track", by.number, "Vorbis:TrackNumber", "General.Track_Position", "format.tags.track",
         "tags.tracknumber", files="song.flac"),
    Same("track", by.number, MediaInfo="General.Track_Position", files="song.mp3"),
    Same("trackTotal", by.number, "Vorbis:Tracktotal", "General.Track_Position_Total",
         "format.tags.tracktotal", "tags.tracktotal"),
    Same("track trackTotal", by.both_of_slash, "ID3v2_4:Track", "", "format.tags.track",
         "tags.TRCK", files="song.mp3"),
    Same("disc", by.number, "Vorbis:Discnumber", "General.Part", "format.tags.disc",
         "tags.discnumber", files="song.flac"),
    Same("disc", by.number, MediaInfo="General.Part_Position", files="song.mp3"),
    Same("discTotal", by.number, "Vorbis:Disctotal", "General.Part_Position_Total",
         "format.tags.disctotal", "tags.disctotal"),
    Same("disc discTotal", by.both_of_slash, "ID3v2_4:PartOfSet", "", "format.tags.disc",
         "tags.TPOS", files="song.mp3"),
    Same("originalDate", by.clock, "Vorbis:Originaldate ID3v2_4:OriginalReleaseTime",
         "General.Original_Released_Date General.extra.ORIGINALDATE",
         "format.tags.originaldate format.tags.tdor", "tags.originaldate tags.TDOR"),
    Same("releaseDate", by.clock, "ID3v2_4:ReleaseTime", "General.Released_Date",
         "format.tags.date", "tags.TDRL", files="song.mp3"),
    Same("hasLyrics", by.is_there, "Vorbis:Lyrics ID3v2_4:Lyrics", "General.Lyrics",
         "format.tags.lyrics format.tags.lyrics-eng", "tags.lyrics tags.USLT::eng"),
    Same("languages", by.one_of, "Vorbis:Language ID3v2_4:Language", "", "format.tags.language",
         "tags.language tags.TLAN"),
    Same("languages", by.language, MediaInfo="Audio.Language", files=SONGS),
    Same("titleSort", by.text, "Vorbis:Titlesort ID3v2_4:TitleSortOrder",
         "General.Track_Sort General.extra.TITLESORT",
         "format.tags.titlesort format.tags.title-sort", "tags.titlesort tags.TSOT"),
    Same("albumSort", by.text, "Vorbis:Albumsort ID3v2_4:AlbumSortOrder",
         "General.Album_Sort General.extra.ALBUMSORT",
         "format.tags.albumsort format.tags.album-sort", "tags.albumsort tags.TSOA"),
    Same("artistSort", by.text, "Vorbis:Artistsort ID3v2_4:PerformerSortOrder",
         "General.Performer_Sort General.extra.ARTISTSORT",
         "format.tags.artistsort format.tags.artist-sort", "tags.artistsort tags.TSOP"),
    Same("albumArtistSort", by.text, "Vorbis:Albumartistsort ID3v2_4:AlbumArtistSortOrder",
         "General.Album_Performer_Sort General.extra.ALBUMARTISTSORT",
         "format.tags.albumartistsort format.tags.tso2", "tags.albumartistsort tags.TSO2"),
    Same("composerSort", by.text, "Vorbis:Composersort ID3v2_4:ComposerSortOrder",
         "General.Composer_Sort General.extra.COMPOSERSORT",
         "format.tags.composersort format.tags.tsoc", "tags.composersort tags.TSOC"),
    Same("compilation", by.yes, "Vorbis:Compilation ID3v2_4:Compilation",
         "General.Compilation General.extra.COMPILATION", "format.tags.compilation",
         "tags.compilation tags.TCMP"),
    Same("podcast", by.is_there, "ID3v2_4:PodcastURL", "", "", "tags.PCST tags.WFED",
         files="song.mp3"),
    Same("tagRating", by.rating, "ID3v2_4:Popularimeter", "", "",
         "tags.POPM:ada@example.org"),
    Same("beatsPerMinute", by.number, "Vorbis:Bpm ID3v2_4:BeatsPerMinute", "General.BPM",
         "format.tags.bpm format.tags.tbpm", "tags.bpm tags.TBPM"),
    Same("musicalKey", by.text, "Vorbis:Key ID3v2_4:InitialKey",
         "General.extra.KEY General.extra.Initial_key", "format.tags.key format.tags.tkey",
         "tags.key tags.TKEY"),
    Same("moods", by.one_of, "Vorbis:Mood ID3v2_4:Mood", "General.Mood General.extra.MOOD",
         "format.tags.mood format.tags.tmoo", "tags.mood tags.TMOO"),
    Same("replayGain.trackGain", by.number,
         "Vorbis:ReplayGainTrackGain ?ID3v2_4:ReplaygainTrackGain",
         "Audio.ReplayGain_Gain General.extra.REPLAYGAIN_TRACK_GAIN",
         "format.tags.replaygain_track_gain",
         "tags.replaygain_track_gain tags.TXXX:REPLAYGAIN_TRACK_GAIN"),
    Same("replayGain.trackPeak", by.number,
         "Vorbis:ReplayGainTrackPeak ?ID3v2_4:ReplaygainTrackPeak",
         "Audio.ReplayGain_Peak General.extra.REPLAYGAIN_TRACK_PEAK",
         "format.tags.replaygain_track_peak",
         "tags.replaygain_track_peak tags.TXXX:REPLAYGAIN_TRACK_PEAK"),
    Same("replayGain.albumGain", by.number,
         "Vorbis:ReplayGainAlbumGain ?ID3v2_4:ReplaygainAlbumGain",
         "General.Album_ReplayGain_Gain General.extra.REPLAYGAIN_ALBUM_GAIN",
         "format.tags.replaygain_album_gain",
         "tags.replaygain_album_gain tags.TXXX:REPLAYGAIN_ALBUM_GAIN"),
    Same("replayGain.albumPeak", by.number,
         "Vorbis:ReplayGainAlbumPeak ?ID3v2_4:ReplaygainAlbumPeak",
         "General.Album_ReplayGain_Peak General.extra.REPLAYGAIN_ALBUM_PEAK",
         "format.tags.replaygain_album_peak",
         "tags.replaygain_album_peak tags.TXXX:REPLAYGAIN_ALBUM_PEAK"),
    Same("musicBrainz.recording", by.text, "Vorbis:MusicbrainzTrackid",
         "?General.extra.MUSICBRAINZ_TRACKID", "format.tags.musicbrainz_trackid",
         "tags.musicbrainz_trackid"),
    Same("musicBrainz.recording", by.has, Mutagen="tags.UFID:http://musicbrainz.org"),
    Same("musicBrainz.track", by.text,
         "Vorbis:MusicbrainzReleasetrackid ?ID3v2_4:MusicBrainzReleaseTrackId",
         "General.extra.MUSICBRAINZ_RELEASETRACKID General.extra.MusicBrainz_Release_Track_Id",
         "format.tags.musicbrainz_releasetrackid format.tags.musicbrainz_release_track_id",
         "tags.musicbrainz_releasetrackid tags.TXXX:MusicBrainz_Release_Track_Id"),
    Same("musicBrainz.track", by.ends, "?ID3v2_4:UserDefinedText"),
    Same("musicBrainz.release", by.text,
         "Vorbis:MusicbrainzAlbumid ?ID3v2_4:MusicBrainzAlbumId",
         "?General.extra.MUSICBRAINZ_ALBUMID General.extra.MusicBrainz_Album_Id",
         "format.tags.musicbrainz_albumid format.tags.musicbrainz_album_id",
         "tags.musicbrainz_albumid tags.TXXX:MusicBrainz_Album_Id"),
    Same("musicBrainz.releaseGroup", by.text,
         "Vorbis:MusicbrainzReleasegroupid ?ID3v2_4:MusicBrainzReleaseGroupId",
         "General.extra.MUSICBRAINZ_RELEASEGROUPID General.extra.MusicBrainz_Release_Group_Id",
         "format.tags.musicbrainz_releasegroupid format.tags.musicbrainz_release_group_id",
         "tags.musicbrainz_releasegroupid tags.TXXX:MusicBrainz_Release_Group_Id"),
    Same("musicBrainz.work", by.text, "Vorbis:MusicbrainzWorkid ?ID3v2_4:MusicBrainzWorkId",
         "General.extra.MUSICBRAINZ_WORKID General.extra.MusicBrainz_Work_Id",
         "format.tags.musicbrainz_workid format.tags.musicbrainz_work_id",
         "tags.musicbrainz_workid tags.TXXX:MusicBrainz_Work_Id"),
    Same("musicBrainz.artists", by.one_of,
         "Vorbis:MusicbrainzArtistid ?ID3v2_4:MusicBrainzArtistId",
         "?General.extra.MUSICBRAINZ_ARTISTID General.extra.MusicBrainz_Artist_Id",
         "format.tags.musicbrainz_artistid format.tags.musicbrainz_artist_id",
         "tags.musicbrainz_artistid tags.TXXX:MusicBrainz_Artist_Id"),
    Same("musicBrainz.albumArtists", by.one_of,
         "Vorbis:MusicbrainzAlbumartistid ?ID3v2_4:MusicBrainzAlbumArtistId",
         "?General.extra.MUSICBRAINZ_ALBUMARTISTID General.extra.MusicBrainz_Album_Artist_Id",
         "format.tags.musicbrainz_albumartistid format.tags.musicbrainz_album_artist_id",
         "tags.musicbrainz_albumartistid tags.TXXX:MusicBrainz_Album_Artist_Id"),
    Same("acoustId", by.text, "Vorbis:AcoustidId ?ID3v2_4:AcoustidId",
         "General.extra.ACOUSTID_ID General.extra.Acoustid_Id",
         "format.tags.acoustid_id", "tags.acoustid_id tags.TXXX:Acoustid_Id"),
    Same("isrcs", by.one_of, "Vorbis:ISRCNumber ID3v2_4:ISRC", "General.ISRC",
         "format.tags.isrc format.tags.tsrc", "tags.isrc tags.TSRC"),
    Same("labels", by.one_of, "Vorbis:Label ID3v2_4:Publisher", "General.Label General.Publisher",
         "format.tags.label format.tags.publisher", "tags.label tags.TPUB"),
    Same("catalogNumbers", by.one_of, "Vorbis:Catalognumber ?ID3v2_4:Catalognumber",
         "General.extra.CATALOGNUMBER", "format.tags.catalognumber",
         "tags.catalognumber tags.TXXX:CATALOGNUMBER"),
    Same("barcode", by.text, "Vorbis:Barcode ?ID3v2_4:Barcode", "General.extra.BARCODE",
         "format.tags.barcode", "tags.barcode tags.TXXX:BARCODE"),
    Same("encodedBy", by.text, "Vorbis:Encodedby ID3v2_4:EncodedBy", "General.EncodedBy",
         "format.tags.encodedby format.tags.encoded_by", "tags.encodedby tags.TENC"),
    Same("covers[].mimeType", by.text, "FLAC:PictureMIMEType ID3v2_4:PictureMIMEType",
         "General.Cover_Mime", "", "pictures[].mime"),
    Same("covers[].description", by.text, "FLAC:PictureDescription ID3v2_4:PictureDescription",
         "General.Cover_Description", "", "pictures[].desc"),
    Same("covers[].type", by.code(n3="front cover"), "FLAC:PictureType ID3v2_4:PictureType"),
    Same("covers[].width", by.number, "FLAC:PictureWidth", "Image.Width", "", "pictures[].width",
         files=SONGS),
    Same("covers[].height", by.number, "FLAC:PictureHeight", "Image.Height", "",
         "pictures[].height", files=SONGS),
    Same("covers[].bytes", by.bytes_of, "FLAC:PictureLength FLAC:Picture ID3v2_4:Picture",
         "Image.StreamSize", "", "pictures[].bytes", files=SONGS),
    Same("covers[]", by.is_there, "", "General.Cover", files=SONGS),
    Same("sampleRate", by.number, "FLAC:SampleRate", "Audio.SamplingRate", "",
         "info.sample_rate", files="song.* film.mp4"),
    Same("channels", by.number, "FLAC:Channels", "Audio.Channels", "", "info.channels",
         files=SONGS),
    Same("channels", by.number, Mutagen="info.channels", files="film.mp4"),
    Same("bitsPerSample", by.number, "FLAC:BitsPerSample", "Audio.BitDepth", "",
         "info.bits_per_sample", files="song.flac film.mp4"),
    Same("bitsPerSample", by.number, "Track:AudioBitsPerSample", files="film.mp4 phone.mov"),
    Same("audioBitRate", by.rounded, "MPEG:AudioBitrate", "Audio.BitRate", "", "info.bitrate",
         files="song.* film.mp4"),
    # --- Streams
    Same("streams[].type", by.text, ffprobe="streams[].codec_type",
         files="film.* phone.mov song.*"),
    Same("streams[].index", by.number, "", "Video.StreamOrder Audio.StreamOrder Text.StreamOrder "
         "Menu.StreamOrder", "streams[].index", files="film.* phone.mov song.*"),
    Same("streams[].id", by.number, "Track:TrackID", "Video.ID Audio.ID Text.ID Menu.ID",
         "streams[].id", files="film.mp4 phone.mov"),
    Same("streams[].codecName", by.text, ffprobe="streams[].codec_name",
         files="film.* phone.mov song.*"),
    Same("streams[].codecTag", by.text,
         "Track:CompressorID Track:AudioFormat Track:OtherFormat", "Video.CodecID",
         "streams[].codec_tag_string", files="film.mp4 phone.mov"),
    Same("streams[].codecTag", by.begins, "", "Audio.CodecID Text.CodecID Menu.CodecID",
         files="film.mp4 phone.mov"),
    Same("streams[].profileName", by.text, "",
         "Video.Format_Profile Audio.Format_AdditionalFeatures", "streams[].profile", files="film.* phone.mov"),
    Same("streams[].level", by.level, "", "Video.Format_Level"),
    Same("streams[].level", by.number, ffprobe="streams[].level", files="film.* phone.mov"),
    Same("streams[].language", by.text, "Track:TrackLanguage Track:MediaLanguageCode", "",
         "streams[].tags.language", files="film.*"),
    Same("streams[].language", by.language,
         MediaInfo="Audio.Language Text.Language Menu.Language", files="film.*"),
    Same("streams[].title", by.text, "Track:TrackName ?AudioUserData:TrackName",
         "Audio.Title Text.Title", "streams[].tags.title", files="film.* song.*"),
    Same("streams[].title", by.text, MediaInfo="Video.Title", files="film.mkv"),
    Same("streams[].handler", by.text, "Track:HandlerDescription", "Video.Title",
         "streams[].tags.handler_name", files="film.mp4"),
    Same("streams[].handler", by.text, ffprobe="streams[].tags.handler_name", files="phone.mov"),
    Same("streams[].marks", by.contains, ffprobe="streams[].disposition",
         files="film.* phone.mov"),
    Same("streams[].marks", by.mark("default"), "Track:TrackDefault",
         "Video.Default Audio.Default Text.Default", files="film.* phone.mov"),
    Same("streams[].marks", by.mark("forced"), "Track:TrackForced",
         "Video.Forced Audio.Forced Text.Forced", files="film.*"),
    Same("streams[].duration", by.rounded, "Track:TrackDuration",
         "Video.Duration Audio.Duration Text.Duration Menu.Duration", "streams[].duration",
         files="film.mp4 phone.mov song.*"),
    Same("streams[].duration", by.rounded, MediaInfo="Text.Duration", files="film.mkv"),
    Same("streams[].duration", by.clock_time, ffprobe="streams[].tags.duration",
         files="film.mkv"),
    Same("streams[].frames", by.number, "", "Video.FrameCount Text.FrameCount",
         "streams[].nb_frames", files="film.mp4 phone.mov"),
    Same("streams[].frames", by.number, "", "General.FrameCount",
         files="film.mp4 phone.mov"),
    Same("streams[].bitRate", by.rounded_unless_zero, "Track:AverageBitrate", "Video.BitRate",
         "streams[].bit_rate", files="film.* phone.mov"),
    Same("streams[].bitRate", by.rounded, "", "Audio.BitRate", files="phone.mov film.mkv"),
    Same("streams[].bitRate", by.rounded, ffprobe="streams[].bit_rate", files=SONGS),
    Same("streams[].width", by.number, "Track:ImageWidth Track:SourceImageWidth", "Video.Width "
         "Video.Sampled_Width", "streams[].width", files="film.* phone.mov song.*"),
    Same("streams[].height", by.number, "Track:ImageHeight Track:SourceImageHeight",
         "Video.Height Video.Sampled_Height", "streams[].height",
         files="film.* phone.mov song.*"),
    Same("width height", by.size, "Composite:ImageSize"),
    Same("streams[].sampleAspect", by.number, "Track:PixelAspectRatio", "Video.PixelAspectRatio",
         "streams[].sample_aspect_ratio", files="film.* phone.mov song.*"),
    Same("streams[].frameRate", by.number, "Track:VideoFrameRate",
         "Video.FrameRate General.FrameRate", "streams[].r_frame_rate",
         files="film.* phone.mov"),
    Same("streams[].averageFrameRate", by.number, ffprobe="streams[].avg_frame_rate",
         files="film.* phone.mov"),
    Same("streams[].fieldOrder", by.any_case, "", "Video.ScanType", "streams[].field_order"),
    Same("streams[].fieldOrder", by.progressive, "Track:VideoFieldOrder Track:VideoScanType"),
    Same("streams[].pixelFormat", by.text, ffprobe="streams[].pix_fmt",
         files="film.* phone.mov song.*"),
    Same("streams[].bitDepth", by.number, "", "Video.BitDepth"),
    Same("streams[].bitDepth", by.number, "", "Image.BitDepth", files=SONGS),
    Same("streams[].bitDepth", by.number, ffprobe="streams[].bits_per_raw_sample",
         files="film.mp4"),
    Same("streams[].chroma", by.text, "", "Video.ChromaSubsampling"),
    Same("streams[].chroma", by.text, "", "Image.ChromaSubsampling", files=SONGS),
    Same("streams[].colours.primaries", by.text, "", "", "streams[].color_primaries",
         files="film.* phone.mov"),
    Same("streams[].colours.primaries", by.colour_number, "Track:ColorPrimaries"),
    Same("streams[].colours.primaries", by.spelling, "", "Video.colour_primaries"),
    Same("streams[].colours.transfer", by.text, "", "", "streams[].color_transfer",
         files="film.* phone.mov"),
    Same("streams[].colours.transfer", by.colour_number, "Track:TransferCharacteristics"),
    Same("streams[].colours.transfer", by.spelling, "", "Video.transfer_characteristics",
         files="film.mp4 phone.mov"),
    Same("streams[].dynamicRange", by.contains, "",
         "Video.HDR_Format_Compatibility", files="film.mkv"),
    Same("streams[].colours.matrix", by.text, "", "", "streams[].color_space",
         files="film.* phone.mov song.*"),
    Same("streams[].colours.matrix", by.colour_number, "Track:MatrixCoefficients"),
    Same("streams[].colours.matrix", by.spelling, "", "Video.matrix_coefficients",
         files="film.mp4 phone.mov"),
    Same("streams[].colours.range", by.text, ffprobe="streams[].color_range",
         files="film.* phone.mov song.*"),
    Same("streams[].colours.range", by.colour_range, "?Track:VideoFullRangeFlag",
         "Video.colour_range"),
    Same("streams[].colours.chromaLocation", by.text, ffprobe="streams[].chroma_location",
         files="film.* phone.mov song.*"),
    Same("streams[].contentLight.highest", by.number, "", "Video.MaxCLL"),
    Same("streams[].contentLight.highestAverage", by.number, "", "Video.MaxFALL"),
    Same("streams[].masteringLuminance.lowest streams[].masteringLuminance.highest",
         by.luminance, "", "Video.MasteringDisplay_Luminance"),
    Same("streams[].rotation", by.angle, "Composite:Rotation", "Video.Rotation",
         files="phone.mov"),
    Same("streams[].rotation", by.clockwise,
         ffprobe="streams[].side_data_list[].rotation", files="phone.mov"),
    Same("streams[].channels", by.number, "Track:AudioChannels", "Audio.Channels",
         "streams[].channels", files="film.* phone.mov song.*"),
    Same("streams[].layout", by.text, ffprobe="streams[].channel_layout"),
    Same("streams[].sampleRate", by.number, "Track:AudioSampleRate", "Audio.SamplingRate",
         "streams[].sample_rate", files="film.* phone.mov song.*"),
    Same("streams[].bitsPerSample", by.number, ffprobe="streams[].bits_per_raw_sample",
         files="film.mkv song.flac"),
    # A cover is a stream, too.
    Same("streams[].index", by.number, ffprobe="covers[].index"),
    Same("streams[].codecName", by.text, ffprobe="covers[].codec_name"),
    Same("streams[].width", by.number, ffprobe="covers[].width"),
    Same("streams[].height", by.number, ffprobe="covers[].height"),
    Same("streams[].sampleAspect", by.number, ffprobe="covers[].sample_aspect_ratio"),
    Same("streams[].pixelFormat", by.text, ffprobe="covers[].pix_fmt"),
    Same("streams[].bitDepth", by.number, ffprobe="covers[].bits_per_raw_sample"),
    Same("streams[].duration", by.rounded, ffprobe="covers[].duration",
         files="film.mp4 song.*"),
    Same("streams[].title", by.text, ffprobe="covers[].tags.title", files=SONGS),
    Same("covers[].type", by.cover, MediaInfo="General.Cover_Type",
         ffprobe="covers[].tags.comment", files=SONGS),
    Same("covers[].mimeType", by.has, Mutagen="tags.APIC:Front"),
    Same("streams[].fileName", by.text, ffprobe="covers[].tags.filename"),
    Same("streams[].mimeType", by.text, ffprobe="covers[].tags.mimetype"),
    Same("displayAspectNum displayAspectDen", by.ratio_of, "", "Video.DisplayAspectRatio",
         "streams[].display_aspect_ratio", files="film.* phone.mov"),
    Same("streams[].sampleFormat", by.text, ffprobe="streams[].sample_fmt"),
    Same("streams[].fileName", by.text, "Matroska:AttachedFileName", "",
         "streams[].tags.filename"),
    Same("streams[].mimeType", by.text, "Matroska:AttachedFileMIMEType", "",
         "streams[].tags.mimetype"),
    Same("streams[].encoder", by.text, "Track:CompressorName",
         "Audio.Encoded_Library Text.Encoded_Library", "streams[].tags.encoder",
         files="film.* phone.mov"),
    Same("streams[].encoder", by.text, ffprobe="streams[].tags.encoder", files=SONGS),
    # --- Chapters
    Same("chapters[].start", by.number, "Chapter:ChapterTimeStart", "Menu.chapters[].start",
         "chapters[].start_time"),
    Same("chapters[].start", by.chapter_start, Mutagen="tags.CHAP:*"),
    Same("chapters[].end", by.number, "Chapter:ChapterTimeEnd", "", "chapters[].end_time"),
    Same("chapters[].title", by.text, "Chapter:ChapterString", "Menu.chapters[].title",
         "chapters[].tags.title"),
    Same("chapters[]", by.chapter_list, "UserData:ChapterList", files="film.mp4"),
    # --- Photos
    Same("width", by.number, "File:ImageWidth", "Image.Width", "streams[].width",
         files="photo.jpg photo.heic"),
    Same("height", by.number, "File:ImageHeight", "Image.Height", "streams[].height",
         files="photo.jpg photo.heic"),
    Same("width", by.number, "SubIFD1:ImageWidth", files="photo.nef"),
    Same("height", by.number, "SubIFD1:ImageHeight", files="photo.nef"),
    Same("width height", by.size, "QuickTime:ImageSpatialExtent", files="photo.heic"),
    Same("pixelFormatName", by.text, ffprobe="streams[].pix_fmt", files=PHOTOS),
    Same("taken", by.clock, "ExifIFD:DateTimeOriginal", files=PHOTOS),
    Same("taken", by.clock, "Composite:SubSecDateTimeOriginal", files=PHOTOS),
    Same("taken", by.offset, "ExifIFD:OffsetTimeOriginal", files=PHOTOS),
    Same("taken", by.fraction, "ExifIFD:SubSecTimeOriginal", files=PHOTOS),
    Same("digitized", by.clock, "ExifIFD:CreateDate Composite:SubSecCreateDate", files=PHOTOS),
    Same("digitized", by.offset, "ExifIFD:OffsetTimeDigitized", files=PHOTOS),
    Same("digitized", by.fraction, "ExifIFD:SubSecTimeDigitized", files=PHOTOS),
    Same("edited", by.clock, "IFD0:ModifyDate Composite:SubSecModifyDate", "Image.Encoded_Date",
         files=PHOTOS),
    Same("edited", by.offset, "ExifIFD:OffsetTime", files=PHOTOS),
    Same("edited", by.fraction, "ExifIFD:SubSecTime", files=PHOTOS),
    Same("camera.serial", by.text, "ExifIFD:SerialNumber"),
    Same("lens.make", by.text, "ExifIFD:LensMake"),
    Same("lens.model", by.text, "ExifIFD:LensModel Composite:LensID"),
    Same("lens.serial", by.text, "ExifIFD:LensSerialNumber"),
    Same("exposureTime", by.number, "ExifIFD:ExposureTime Composite:ShutterSpeed"),
    Same("aperture", by.number, "ExifIFD:FNumber Composite:Aperture"),
    Same("iso", by.number, "ExifIFD:ISO"),
    Same("exposureBias", by.number, "ExifIFD:ExposureCompensation"),
    Same("exposureProgram", by.code(n3="aperture priority"), "ExifIFD:ExposureProgram"),
    Same("metering", by.code(n5="pattern"), "ExifIFD:MeteringMode"),
    Same("whiteBalance", by.code(n1="manual"), "ExifIFD:WhiteBalance"),
    Same("focalLength", by.number, "ExifIFD:FocalLength"),
    Same("focalLength35", by.number,
         "ExifIFD:FocalLengthIn35mmFormat Composite:FocalLength35efl"),
    Same("flash.value", by.number, "ExifIFD:Flash"),
    Same("rotation", by.exif_orientation, "IFD0:Orientation", files="photo.jpg photo.nef"),
    Same("rotation", by.quarters, "QuickTime:Rotation", files="photo.heic"),
    Same("rotation", by.angle, "", "Image.extra.Rotation", files="photo.heic"),
    Same("colourProfile", by.text, "ICC_Profile:ProfileDescription"),
    Same("colourProfile", by.code(n1="sRGB"), "ExifIFD:ColorSpace", files="photo.nef"),
    Same("position.latitude", by.number, "GPS:GPSLatitude"),
    Same("position.longitude", by.number, "GPS:GPSLongitude"),
    Same("position.altitude", by.number, "GPS:GPSAltitude"),
    Same("position", by.position, "Composite:GPSPosition", files=PHOTOS),
    Same("position.latitude", by.number, "Composite:GPSLatitude"),
    Same("position.longitude", by.number, "Composite:GPSLongitude"),
    Same("position.altitude", by.number, "Composite:GPSAltitude"),
    Same("position.accuracy", by.number, "GPS:GPSHPositioningError"),
    Same("position.direction", by.number, "GPS:GPSImgDirection"),
    Same("position.north", by.north, "GPS:GPSImgDirectionRef"),
    Same("position.time", by.moment, "Composite:GPSDateTime"),
    Same("position.time", by.part_of_moment, "GPS:GPSDateStamp GPS:GPSTimeStamp"),
    Same("address.location", by.text, "XMP-iptcCore:Location IPTC:Sub-location"),
    Same("address.city", by.text, "XMP-photoshop:City IPTC:City"),
    Same("address.state", by.text, "XMP-photoshop:State IPTC:Province-State"),
    Same("address.country", by.text, "XMP-photoshop:Country IPTC:Country-PrimaryLocationName"),
    Same("address.countryCode", by.text, "XMP-iptcCore:CountryCode"),
    Same("headline", by.text, "XMP-photoshop:Headline IPTC:Headline"),
    Same("caption", by.text, "IFD0:ImageDescription XMP-dc:Description IPTC:Caption-Abstract",
         "Image.Title"),
    Same("keywords", by.same_list, "XMP-dc:Subject IPTC:Keywords"),
    Same("keywordPaths", by.one_of, "XMP-lr:HierarchicalSubject"),
    Same("rating", by.number, "XMP-xmp:Rating"),
    Same("label", by.text, "XMP-xmp:Label"),
    Same("creators", by.one_of, "IFD0:Artist XMP-dc:Creator IPTC:By-line"),
    Same("credit", by.text, "XMP-photoshop:Credit IPTC:Credit"),
    Same("people[].name", by.text, "XMP-mwg-rs:RegionName"),
    Same("people[].type", by.text, "XMP-mwg-rs:RegionType"),
    Same("people[].centreX", by.number, "XMP-mwg-rs:RegionAreaX"),
    Same("people[].centreY", by.number, "XMP-mwg-rs:RegionAreaY"),
    Same("people[].width", by.number, "XMP-mwg-rs:RegionAreaW"),
    Same("people[].height", by.number, "XMP-mwg-rs:RegionAreaH"),
)

DIFFERENT = (
    Different("contentType", "Its first bytes are those of TIFF; ExifTool goes by the name.",
              ExifTool="File:MIMEType", files="photo.nef"),
    Different("duration", "ExifTool divides the size by the bit rate; the file counts its frames.",
              by.rounded, ExifTool="Composite:Duration", files="song.mp3"),
    Different("duration", "Mutagen has that of the first sound, with what players leave out at its "
              "beginning.", by.rounded, Mutagen="info.length", files="film.mp4"),
    Different("bitRate", "MediaInfo leaves the tag out; the document's is that of the whole file, "
              "as FFmpeg's.", by.rounded, MediaInfo="General.OverallBitRate", files="song.mp3"),
    Different("audioBitRate", "MediaInfo states what the encoder aimed at; the document what the "
              "file says.", by.rounded, MediaInfo="Audio.BitRate", files="film.mp4"),
    Different("composer", "MediaInfo adds other people to the composers.",
              MediaInfo="General.Composer", files="song.flac"),
    Different("encoder", "MediaInfo names the program that it recognises in the sound itself.",
              MediaInfo="General.Encoded_Library Audio.Encoded_Library", files="song.mp3"),
    Different("streams[].channels", "ExifTool shows the number in MP4's track, which is always 2; "
              "the document that of the sound.", by.number, ExifTool="?Track:AudioChannels",
              files="film.mp4"),
    Different("streams[].handler", "ExifTool shows QuickTime's second handler, of the data; the "
              "document the first, of the track.", ExifTool="Track:HandlerDescription",
              files="phone.mov"),
    Different("streams[].duration", "MediaInfo leaves out the delay of the stream, or counts what "
              "is in the sound; the document has what the container states.", by.rounded,
              MediaInfo="?Video.Duration ?Audio.Duration", files="film.mkv"),
    Different("colourProfile", "The colour profile in the file counts more than Exif's word.",
              by.code(n1="sRGB"), ExifTool="ExifIFD:ColorSpace", files="photo.jpg photo.heic"),
    Different("address.countryCode", "XMP counts more than IPTC, which has three letters.",
              ExifTool="IPTC:Country-PrimaryLocationCode", files="photo.jpg"),
    Different("width", "The thumbnail's; the document has the camera's picture.", by.number,
              "IFD0:ImageWidth", "Image.Width", "streams[].width", files="photo.nef"),
    Different("height", "The thumbnail's; the document has the camera's picture.", by.number,
              "IFD0:ImageHeight", "Image.Height", "streams[].height", files="photo.nef"),
    Different("streams[].bitsPerSample", "Lossy sound has no bits per sample; Matroska has a "
              "number there all the same.", by.number,
              "Track:AudioBitsPerSample", "Audio.BitDepth", files="film.mkv"),
)

LEFT_OUT = (
    LeftOut("About the call, not about the file.",
            ":SourceFile ExifTool:ExifToolVersion System:FileName System:Directory",
            "", "format.filename"),
    LeftOut("The file system's, and nothing that a document needs.",
            "System:FileAccessDate System:FileInodeChangeDate System:FilePermissions"),
    LeftOut("What the program calls the format, or where it is in its own lists; the document has "
            "contentType, containerFormat and codecName.",
            "File:FileType File:FileTypeExtension Matroska:DocType QuickTime:HandlerType "
            "Track:HandlerType Track:TrackType Track:ColorProfiles",
            "General.FileExtension General.Format General.Format_Profile General.CodecID "
            "General.ContentType Video.Format Audio.Format Audio.Format_Profile "
            "Audio.Format_Version Audio.Format_Commercial_IfAny Text.Format Menu.Format "
            "Image.Format Text.MuxingMode ?Image.MuxingMode General.extra.FileExtension_Invalid",
            "format.format_name format.format_long_name streams[].codec_long_name "
            "covers[].codec_long_name covers[].codec_type format.probe_score",
            "info.codec info.codec_description info.layer info.version"),
    LeftOut("A second way to say what is compared already.",
            "Composite:Megapixels Composite:AvgBitrate Composite:GPSAltitudeRef "
            "GPS:GPSLatitudeRef GPS:GPSLongitudeRef GPS:GPSAltitudeRef Track:MediaDuration "
            "Track:MaxBitrate ?Track:DefaultDuration ID3v2_4:Length",
            "General.VideoCount General.AudioCount General.TextCount General.MenuCount "
            "General.ImageCount Video.FrameRate_Num Video.FrameRate_Den Audio.@typeorder "
            "Text.@typeorder Menu.@typeorder General.extra.Attachments Video.HDR_Format "
            "General.Cover Image.extra.Rotation_String Image.PixelAspectRatio "
            "Image.DisplayAspectRatio",
            "format.nb_streams format.nb_programs ?format.nb_stream_groups "
            "streams[].duration_ts covers[].duration_ts chapters[].id chapters[].start "
            "chapters[].end streams[].codec_tag covers[].disposition "
            "covers[].display_aspect_ratio format.tags.tlen "
            "streams[].side_data_list[].displaymatrix streams[].side_data_list[].side_data_type "
            "streams[].display_aspect_ratio",
            "tags.CTOC:toc tags.TLEN tags.covr info.total_samples"),
    LeftOut("ExifTool computes it from what is compared already, with a model of the sensor.",
            "Composite:CircleOfConfusion Composite:FOV Composite:HyperfocalDistance "
            "Composite:LightValue Composite:ScaleFactor35efl"),
    LeftOut("How the container stores it: versions, brands, positions, units of time.",
            "QuickTime:MajorBrand QuickTime:MinorVersion QuickTime:CompatibleBrands "
            "QuickTime:MediaDataSize QuickTime:MediaDataOffset QuickTime:MovieHeaderVersion "
            "QuickTime:TimeScale QuickTime:NextTrackID QuickTime:HandlerVendorID "
            "Track:TrackHeaderVersion Track:MediaHeaderVersion Track:MediaTimeScale "
            "Track:GenMediaVersion Track:GenFlags Track:HandlerClass Track:VendorID "
            "Track:PurchaseFileFormat Track:LayoutFlags Track:FontTable Track:ChapterListTrackID "
            "Track:BufferSize Track:Warning Matroska:EBMLVersion Matroska:EBMLReadVersion "
            "Matroska:DocTypeVersion Matroska:DocTypeReadVersion Matroska:TimecodeScale "
            "Meta:PrimaryItemReference File:ID3Size",
            "General.CodecID_Compatible General.CodecID_Version General.Format_Version "
            "General.HeaderSize General.DataSize General.FooterSize General.IsStreamable "
            "General.StreamSize General.extra.ErrorDetectionType Video.StreamSize "
            "Audio.StreamSize Text.StreamSize Audio.Source_StreamSize "
            "Video.extra.CodecConfigurationBox Image.extra.CodecConfigurationBox "
            "Image.StreamSize Video.extra.Menus Audio.extra.Menus Text.extra.Menus "
            "Menu.extra.Menu_For Video.CodecID Audio.CodecID Text.CodecID Image.CodecID "
            "Video.ID Audio.ID Text.ID Image.ID Image.extra.Describes",
            "streams[].time_base covers[].time_base chapters[].time_base streams[].start_pts "
            "covers[].start_pts streams[].extradata_size streams[].is_avc "
            "streams[].nal_length_size streams[].tags.vendor_id format.tags.major_brand "
            "format.tags.minor_version format.tags.compatible_brands",
            "info.frame_offset info.padding info.sketchy"),
    LeftOut("Random numbers that only the container uses.",
            "Matroska:AttachedFileUID Matroska:TagTrackUID Track:TrackUID Track:TrackNumber",
            "General.UniqueID Video.UniqueID Audio.UniqueID Text.UniqueID"),
    LeftOut("Matroska's name of the codec; the document has FFmpeg's, codecName.",
            "Track:CodecID"),
    LeftOut("ExifTool shows only the last of several.",
            "Matroska:AttachedFileData Matroska:Encoder Matroska:Duration"),
    LeftOut("Settings of a player that nobody fills in.",
            "QuickTime:PreferredRate QuickTime:PreferredVolume QuickTime:MatrixStructure "
            "QuickTime:PreviewTime QuickTime:PreviewDuration QuickTime:PosterTime "
            "QuickTime:SelectionTime QuickTime:SelectionDuration QuickTime:CurrentTime "
            "Track:TrackLayer Track:TrackVolume Track:GraphicsMode Track:OpColor "
            "Track:GenGraphicsMode Track:GenOpColor Track:GenBalance Track:Balance "
            "Track:XResolution Track:YResolution Track:BitDepth ItemList:MediaType",
            "Audio.AlternateGroup Text.AlternateGroup", "format.tags.media_type", "tags.stik"),
    LeftOut("The track's matrix, which the document states as rotation and mirrored.",
            "Track:MatrixStructure"),
    LeftOut("An upright picture has no rotation.", "Composite:Rotation", "Video.Rotation",
            files="film.mp4"),
    LeftOut("When tags or tracks were last written: the file's date says as much.",
            "QuickTime:ModifyDate Track:TrackModifyDate Track:MediaModifyDate "
            "ID3v2_4:TaggingTime ID3v2_4:EncodingTime",
            "General.Tagged_Date Video.Tagged_Date Audio.Tagged_Date Text.Tagged_Date "
            "Menu.extra.Tagged_Date General.Encoded_Date",
            "format.tags.tdtg format.tags.creation_time", "tags.TDTG tags.TDEN"),
    LeftOut("QuickTime's number for an unknown language.", "Track:MediaLanguageCode",
            files="phone.mov"),
    LeftOut("Where a stream begins: a matter of players.", "",
            "Video.Delay Video.Delay_Source Audio.Delay Audio.Delay_Source Audio.Video_Delay "
            "Audio.extra.Source_Delay Audio.extra.Source_Delay_Source Audio.Source_Duration "
            "Audio.Source_Duration_LastFrame Audio.Source_FrameCount",
            "format.start_time streams[].start_time covers[].start_time"),
    LeftOut("How the codec works inside, which nobody chooses a file by.",
            "FLAC:BlockSizeMin FLAC:BlockSizeMax FLAC:FrameSizeMin FLAC:FrameSizeMax "
            "FLAC:TotalSamples FLAC:PictureBitsPerPixel FLAC:PictureIndexedColors "
            "MPEG:MPEGAudioVersion MPEG:AudioLayer MPEG:SampleRate MPEG:ChannelMode "
            "MPEG:MSStereo MPEG:IntensityStereo MPEG:CopyrightFlag MPEG:OriginalMedia "
            "MPEG:Emphasis File:EncodingProcess File:BitsPerSample File:ColorComponents "
            "File:YCbCrSubSampling QuickTime:HEVCConfigurationVersion "
            "QuickTime:GeneralProfileSpace QuickTime:GeneralTierFlag QuickTime:GeneralProfileIDC "
            "QuickTime:GenProfileCompatibilityFlags QuickTime:ConstraintIndicatorFlags "
            "QuickTime:GeneralLevelIDC QuickTime:MinSpatialSegmentationIDC "
            "QuickTime:ParallelismType QuickTime:ChromaFormat QuickTime:BitDepthLuma "
            "QuickTime:BitDepthChroma QuickTime:AverageFrameRate QuickTime:ConstantFrameRate "
            "QuickTime:NumTemporalLayers QuickTime:TemporalIDNested QuickTime:ImagePixelDepth",
            "Video.Format_Settings_CABAC Video.Format_Settings_RefFrames Video.Format_Tier "
            "Image.Format_Tier Image.Format_Profile Image.Format_Level "
            "Audio.Format_Settings_Mode Audio.Format_Settings_ModeExtension "
            "Audio.Format_Settings_SBR Audio.Format_Settings_Endianness "
            "Image.Format_Settings_Endianness Video.FrameRate_Mode "
            "Video.FrameRate_Mode_Original General.OverallBitRate_Mode Audio.BitRate_Mode "
            "Text.BitRate_Mode Audio.SamplesPerFrame Audio.SamplingCount Audio.FrameRate "
            "Audio.FrameCount Audio.Compression_Mode Image.Compression_Mode Video.ColorSpace "
            "Image.ColorSpace Image.BitDepth Image.ChromaSubsampling Video.Stored_Height "
            "Audio.ServiceKind Audio.extra.bsid Audio.extra.dialnorm "
            "Audio.extra.dialnorm_Average Audio.extra.dialnorm_Minimum Audio.extra.acmod "
            "Audio.extra.lfeon ?Audio.extra.cmixlev ?Audio.extra.surmixlev Text.FrameRate "
            "Text.Events_Total Text.BitRate Image.extra.FrameRate_Num Image.extra.FrameRate_Den "
            "?Image.extra.colour_range ?Image.extra.colour_range_Source ?Image.colour_range "
            "?Image.colour_range_Source Image.extra.ColorSpace_ICC",
            "streams[].refs covers[].refs streams[].has_b_frames covers[].has_b_frames "
            "streams[].film_grain covers[].film_grain streams[].closed_captions "
            "covers[].closed_captions streams[].bits_per_sample streams[].coded_width "
            "streams[].coded_height covers[].coded_width covers[].coded_height "
            "?streams[].initial_padding ?streams[].view_ids_available "
            "?streams[].view_pos_available covers[].profile covers[].color_range "
            "covers[].color_space covers[].chroma_location covers[].r_frame_rate",
            "info.min_blocksize info.max_blocksize info.min_framesize info.max_framesize "
            "info.mode info.protected info.bitrate_mode info.encoder_settings info.code"),
    LeftOut("MediaInfo counts or measures it in the stream; the container does not state it.", "",
            "Video.FrameCount General.FrameCount", files="film.mkv"),
    LeftOut("A checksum of the sound.", "FLAC:MD5Signature", "Audio.extra.MD5_Unencoded", "",
            "info.md5_signature"),
    LeftOut("Written by the encoder into its own data, beside the encoder's name; the document "
            "has what the container says.",
            "File:Comment Vorbis:Vendor",
            "Video.Encoded_Library Video.Encoded_Library_Name Video.Encoded_Library_Version "
            "Video.Encoded_Library_Settings Image.Encoded_Library Image.Encoded_Library_Name "
            "Image.Encoded_Library_Version Image.Encoded_Library_Settings "
            "Audio.Encoded_Library"),
    LeftOut("MediaInfo's own words for a layout; the document has FFmpeg's.", "",
            "Audio.ChannelLayout Audio.ChannelLayout_Original Audio.ChannelPositions"),
    LeftOut("Where MediaInfo has found it, and whether.", "",
            "Video.colour_description_present Video.colour_description_present_Source "
            "Video.colour_range_Source Video.colour_primaries_Source "
            "Video.transfer_characteristics_Source Video.matrix_coefficients_Source "
            "Video.MasteringDisplay_ColorPrimaries_Source Video.MasteringDisplay_Luminance_Source "
            "Video.MaxCLL_Source Video.MaxFALL_Source"),
    LeftOut("MediaInfo's own words; FFmpeg's are compared with ffprobe's.", "",
            "Video.transfer_characteristics Video.matrix_coefficients", files="film.mkv"),
    LeftOut("The display that a film was graded on: its luminance is in the document, its "
            "primaries change nothing for a library.", "",
            "Video.MasteringDisplay_ColorPrimaries"),
    LeftOut("The size of an attached picture; a document of a film has its width and height.",
            "ItemList:CoverArt"),
    LeftOut("FFmpeg makes a film of a picture.", "", "",
            "format.duration format.bit_rate streams[].duration streams[].index "
            "streams[].codec_name streams[].codec_type streams[].avg_frame_rate "
            "streams[].r_frame_rate streams[].profile streams[].bits_per_raw_sample "
            "streams[].sample_aspect_ratio ?streams[].disposition ?streams[].id ?streams[].level "
            "?streams[].nb_frames ?streams[].codec_tag_string",
            files=PHOTOS),
    LeftOut("The colours of pictures are in their profile; FFmpeg adds the format's usual ones.",
            "", "", "streams[].color_range streams[].color_space streams[].chroma_location",
            files=PHOTOS),
    LeftOut("An attachment plays as long as the film, says FFmpeg.", "", "",
            "streams[].duration covers[].duration", files="film.mkv"),
    # --- Songs
    LeftOut("Rare, and nothing that songs are sorted, found or shown by.",
            "ID3v2_4:Grouping ID3v2_4:Subtitle ID3v2_4:SetSubtitle ID3v2_4:OriginalAlbum "
            "ID3v2_4:OriginalArtist ID3v2_4:OriginalLyricist ID3v2_4:OriginalFileName "
            "ID3v2_4:FileOwner ID3v2_4:ProducedNotice ID3v2_4:InternetRadioStationName "
            "ID3v2_4:InternetRadioStationOwner ID3v2_4:Media ID3v2_4:FileType "
            "ID3v2_4:MovementName ID3v2_4:MovementNumber ID3v2_4:TermsOfUse ID3v2_4:Ownership "
            "ID3v2_4:PlaylistDelay",
            "General.Grouping General.Title_More General.Track_More General.Original_Album "
            "General.Original_Performer General.Original_Lyricist General.Owner "
            "General.Producer_Copyright General.ServiceName General.ServiceProvider "
            "General.extra.Set_subtitle General.extra.Original_FileName "
            "General.extra.Media_Type General.extra.File_type",
            "format.tags.grouping format.tags.tit3 format.tags.tsst format.tags.toal "
            "format.tags.tope format.tags.toly format.tags.tofn format.tags.town "
            "format.tags.tpro format.tags.trsn format.tags.trso format.tags.tmed "
            "format.tags.tflt format.tags.tdly",
            "tags.TIT1 tags.TIT3 tags.TSST tags.TOAL tags.TOPE tags.TOLY tags.TOFN tags.TOWN "
            "tags.TPRO tags.TRSN tags.TRSO tags.TMED tags.TFLT tags.TDLY tags.MVNM tags.MVIN "
            "tags.GRP1 tags.USER:eng tags.OWNE tags.COMR:*", files="song.mp3"),
    LeftOut("Links to pages, most of which are gone.",
            "ID3v2_4:ArtistURL ID3v2_4:CommercialURL ID3v2_4:CopyrightURL ID3v2_4:FileURL "
            "ID3v2_4:InternetRadioStationURL ID3v2_4:PaymentURL ID3v2_4:PublisherURL "
            "ID3v2_4:SourceURL ?ID3v2_4:UserDefinedURL ?ID3v2_4:Apage_URL",
            "General.Service_Url General.extra.A_page General.extra.Commercial_information "
            "General.extra.Copyright_Legal_information "
            "General.extra.Official_audio_file_webpage "
            "General.extra.Official_audio_source_webpage General.extra.Payment "
            "General.extra.Publisher_Url", "",
            "tags.WCOM:* tags.WCOP tags.WOAF tags.WOAR:* tags.WOAS tags.WORS tags.WPAY "
            "tags.WPUB tags.WXXX:A_page"),
    LeftOut("What a podcast program keeps; the document says that it is a podcast.",
            "ID3v2_4:PodcastCategory ID3v2_4:PodcastDescription ID3v2_4:PodcastID "
            "ID3v2_4:PodcastKeywords", "General.PodcastCategory",
            "format.tags.tcat format.tags.tdes format.tags.tgid format.tags.tkwd",
            "tags.TCAT tags.TDES tags.TGID tags.TKWD"),
    LeftOut("A player's own notes: how often it has played the song, how loud to play it; the "
            "document has ReplayGain.", "ID3v2_4:PlayCounter ID3v2_4:RelativeVolumeAdjustment",
            "", "", "tags.PCNT tags.RVA2:track"),
    LeftOut("The words of a text: the document only says that they are there.",
            "ID3:SynchronizedLyricsType ID3:SynchronizedLyricsDescription "
            "ID3:SynchronizedLyricsText", "", "", "tags.SYLT:Tide:eng"),
    LeftOut("Data for one program.",
            "ID3v2_4:Private ID3v2_4:MusicCDIdentifier ?ID3v2_3:GEOB-*", "",
            "format.tags.id3v2_priv.example.org",
            "tags.PRIV:* tags.UFID:http://example.org tags.MCDI tags.ETCO tags.GEOB:A_note"),
    # --- Photos
    LeftOut("How the metadata are stored: versions, byte order, a checksum, the writer.",
            "File:ExifByteOrder File:CurrentIPTCDigest ExifIFD:ExifVersion "
            "?ExifIFD:FlashpixVersion ExifIFD:ComponentsConfiguration GPS:GPSVersionID "
            "IPTC:ApplicationRecordVersion IPTC:EnvelopeRecordVersion IPTC:CodedCharacterSet "
            "JFIF:JFIFVersion XMP-x:XMPToolkit"),
    LeftOut("Dots per inch for printers, which cameras fill in by heart.",
            "IFD0:XResolution IFD0:YResolution IFD0:ResolutionUnit IFD0:YCbCrPositioning "
            "JFIF:XResolution JFIF:YResolution JFIF:ResolutionUnit"),
    LeftOut("A remark that programs fill with anything; title, headline and caption are there.",
            "ExifIFD:UserComment"),
    LeftOut("What is inside a colour profile; the document has its name.",
            "ICC-header:* ICC_Profile:MediaWhitePoint"),
    LeftOut("How pictures, thumbnails and previews lie in a raw file.",
            "IFD0:BitsPerSample IFD0:Compression IFD0:PhotometricInterpretation "
            "IFD0:PlanarConfiguration IFD0:RowsPerStrip IFD0:SamplesPerPixel "
            "IFD0:StripByteCounts IFD0:StripOffsets IFD0:SubfileType IFD0:ThumbnailTIFF "
            "SubIFD:Compression SubIFD:JpgFromRaw SubIFD:JpgFromRawLength SubIFD:JpgFromRawStart "
            "SubIFD:SubfileType SubIFD1:BitsPerSample SubIFD1:CFAPattern2 "
            "SubIFD1:CFARepeatPatternDim SubIFD1:Compression SubIFD1:PhotometricInterpretation "
            "SubIFD1:PlanarConfiguration SubIFD1:RowsPerStrip SubIFD1:SamplesPerPixel "
            "SubIFD1:StripByteCounts SubIFD1:StripOffsets SubIFD1:SubfileType "
            "Composite:CFAPattern"),
    LeftOut("The size in which people's regions were marked, and their unit: the document has "
            "parts of the picture.",
            "XMP-mwg-rs:RegionAppliedToDimensionsW XMP-mwg-rs:RegionAppliedToDimensionsH "
            "XMP-mwg-rs:RegionAppliedToDimensionsUnit XMP-mwg-rs:RegionAreaUnit"),
)
