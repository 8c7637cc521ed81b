"""When two values say the same: units, spellings of dates, fractions, lists.

Each function gets what the other program says and the list of values that the document has for the
key: all that there are, or those of the same stream. The table names these functions.
"""

import re
from datetime import datetime, timedelta, timezone


def numbers_in(text):
    return [float(part) for part in re.findall(r"[-+]?\d+(?:\.\d+)?", str(text))]


def number_of(value):
    """Of 1.5, "1.5", "3/2", "1.5 dB", "0x1f"."""
    text = str(value).strip()
    if re.fullmatch(r"0x[0-9a-fA-F]+", text):
        return float(int(text, 16))
    fraction = re.fullmatch(r"([-+]?\d+)[/:](\d+)", text)
    if fraction:
        return float(fraction[1]) / float(fraction[2]) if int(fraction[2]) else None
    found = re.match(r"[-+]?\d+(?:\.\d+)?", text)
    return float(found[0]) if found else None


def is_close(one, other, tolerance):
    return one is not None and other is not None and abs(one - other) <= tolerance


def text(theirs, ours):
    """The same text."""
    return str(theirs) in map(str, ours)


def any_case(theirs, ours):
    """The same text, whatever the letters' case."""
    return str(theirs).lower() in (str(value).lower() for value in ours)


def number(theirs, ours):
    """The same number, as far as the one with fewer decimals states it."""
    return any(is_close(number_of(theirs), number_of(value), 0.0006) for value in ours)


def rounded(theirs, ours):
    """The same number within one in a thousand, because the other program rounds."""
    found = number_of(theirs)
    return any(is_close(found, number_of(value), abs(found or 0) / 1000 + 0.0006) for value in ours)


def texts(theirs, ours):
    """The same texts, as a list or joined."""
    found = theirs if isinstance(theirs, list) else re.split(r"\s*[;/]\s*|\0", str(theirs))
    wanted = [part for value in ours for part in (value if isinstance(value, list) else [value])]
    return sorted(map(str, found)) == sorted(map(str, wanted))


def one_of(theirs, ours):
    """One of several values: the other program shows no more."""
    wanted = [part for value in ours for part in (value if isinstance(value, list) else [value])]
    return str(theirs) in map(str, wanted)


def same_list(theirs, ours):
    """A list of the same values, in any order; a list of one may be written without brackets."""
    found = theirs if isinstance(theirs, list) else [theirs]
    wanted = [part for value in ours for part in (value if isinstance(value, list) else [value])]
    return sorted(map(str, found)) == sorted(map(str, wanted))


def moment_of(value, otherwise=None):
    """The moment of "2021:08:14 17:03:21.25+02:00" and other spellings; OTHERWISE: its zone if none
    is stated."""
    found = re.match(r"(\d{4})[-:](\d\d)[-:](\d\d)[T ](\d\d):(\d\d):(\d\d)(?:\.\d+)?\s*"
                     r"(Z|UTC|[-+]\d\d:?\d\d)?$", str(value).strip())
    if not found:
        return None
    zone = found[7]
    if zone in ("Z", "UTC"):
        offset = timezone.utc
    elif zone:
        sign = -1 if zone[0] == "-" else 1
        offset = timezone(sign * timedelta(hours=int(zone[1:3]), minutes=int(zone[-2:])))
    else:
        offset = otherwise
    return datetime(*map(int, found.groups()[:6]), tzinfo=offset)


def moment(theirs, ours):
    """The same moment, in any zone; without one, UTC."""
    found = moment_of(theirs, timezone.utc)
    return found is not None and found in (moment_of(value, timezone.utc) for value in ours)


def digits(value):
    return re.sub(r"\D", "", str(value))


def clock(theirs, ours):
    """The same date and time by the clock, as far as the other program states them."""
    found = digits(theirs)
    return len(found) >= 4 and any(digits(value).startswith(found) for value in ours)


def offset(theirs, ours):
    """The offset from UTC at the end of a date."""
    return any(str(value).endswith(str(theirs)) for value in ours)


def fraction(theirs, ours):
    """The digits behind the second."""
    return any(f".{theirs}" in str(value) for value in ours)


def position(theirs, ours):
    """Latitude, longitude and perhaps altitude, in this order."""
    found = numbers_in(theirs)
    return any(len(found) >= 2 and
               all(is_close(one, value.get(name), 0.0001) for one, name in
                   zip(found, ("latitude", "longitude", "altitude"))) for value in ours)


def both_of_slash(theirs, ours):
    """The numbers of "3/12", in two keys."""
    return numbers_in(theirs) == sorted(number_of(value) for value in ours)


def language(theirs, ours):
    """ISO 639-1 and 639-2."""
    two = {"en": "eng", "de": "ger", "fr": "fre", "ja": "jpn"}
    return one_of(two.get(theirs, theirs), ours)


def rounded_unless_zero(theirs, ours):
    """The same number within one in a thousand; 0 stands for unknown."""
    return number_of(theirs) == 0 or rounded(theirs, ours)


def yes(theirs, ours):
    """Yes or 1 for true."""
    return (str(theirs).lower() in ("yes", "1", "true")) in ours


def is_there(_, ours):
    """Something that a document only says to be there."""
    return bool(ours) and ours[0] not in (False, 0)


def words_of(value):
    return re.sub(r"[^a-z0-9]", "", str(value).lower())


def spelling(theirs, ours):
    """The same letters and digits: "BT.709" and "bt709"."""
    return words_of(theirs) in map(words_of, ours)


def contains(theirs, ours):
    """A part of a list; "_" for spaces."""
    wanted = [part for value in ours for part in (value if isinstance(value, list) else [value])]
    return str(theirs).replace("_", " ") in map(str, wanted)


def begins(theirs, ours):
    """What the document has, and more behind it."""
    return any(str(theirs).startswith(str(value)) for value in ours)


def ends(theirs, ours):
    """What the document has, behind something more."""
    return any(str(theirs).endswith(str(value)) for value in ours)


def bytes_of(theirs, ours):
    """The number in "(Binary data 242 bytes, ...)"."""
    return any(number_of(value) in numbers_in(theirs) for value in ours)


def size(theirs, ours):
    """Width and height, in two keys."""
    return sorted(numbers_in(theirs)) == sorted(number_of(value) for value in ours)


def pairs(theirs, ours):
    """Roles and names of people."""
    listed = theirs if isinstance(theirs, list) else re.split(r"[/]", str(theirs))
    role, name = (str(part) for part in listed[:2])
    return any(value.get("role") == role and value.get("name") == name for value in ours)


def role_in_brackets(theirs, ours):
    """"Name (role)"."""
    return any(f"{value['name']} ({value.get('role')})" == theirs for value in ours)


def one_role(theirs, ours):
    """The role without the name."""
    return any(value.get("role") == theirs for value in ours)


def level(theirs, ours):
    """MediaInfo writes H.264's level 30 as 3, and HEVC's level 60 as 2."""
    return any(number_of(theirs) * factor == number_of(value) for value in ours
               for factor in (10, 30))


def clockwise(theirs, ours):
    """An angle anticlockwise, or below zero."""
    return any((-number_of(theirs)) % 360 == number_of(value) for value in ours)


def angle(theirs, ours):
    """An angle clockwise."""
    return any(number_of(theirs) % 360 == number_of(value) for value in ours)


def quarters(theirs, ours):
    """Quarters of a turn anticlockwise, or their degrees in older releases of ExifTool."""
    turn = number_of(theirs)
    return any((-turn * (90 if turn < 4 else 1)) % 360 == number_of(value) for value in ours)


def exif_orientation(theirs, ours):
    """Exif's numbers 1, 3, 6 and 8 as degrees."""
    return {1: 0, 3: 180, 6: 90, 8: 270}.get(int(theirs)) in ours


def code(**words):
    """Exif's numbers as words: code(n3="aperture priority")."""
    def agrees(theirs, ours):
        return words.get(f"n{theirs}") in ours
    agrees.__doc__ = "Exif's numbers as words."
    return agrees


def rating(theirs, ours):
    """The popularity 0 to 255, of which our 0 to 100 are made by stars."""
    stars = {1: 20, 64: 40, 128: 60, 196: 80, 255: 100}
    return any(stars.get(int(found)) in ours for found in numbers_in(theirs))


def thousandths(theirs, ours):
    """Milliseconds."""
    return number(number_of(theirs) / 1000, ours)


def colour_number(theirs, ours):
    """The numbers of ITU-T H.273."""
    return {"1": "bt709", "9": "bt2020", "16": "smpte2084"}.get(str(theirs)) in ours


def clock_time(theirs, ours):
    """Hours, minutes and seconds."""
    hours, minutes, seconds = str(theirs).split(":")
    return number(int(hours) * 3600 + int(minutes) * 60 + float(seconds), ours)


def colour_range(theirs, ours):
    """"Limited" or 0 for "tv", "Full" or 1 for "pc"."""
    return {"limited": "tv", "0": "tv", "full": "pc", "1": "pc"}.get(str(theirs).lower()) in ours


def luminance(theirs, ours):
    """"min: 0.0050 cd/m2, max: 1000 cd/m2", in two keys."""
    found = [float(number) for number in re.findall(r": ([\d.]+)", str(theirs))]
    return found == [number_of(value) for value in ours]


def north(theirs, ours):
    """T for true, M for magnetic."""
    return {"T": "true", "M": "magnetic"}.get(theirs) in ours


def part_of_moment(theirs, ours):
    """The date or the time of day."""
    return any(digits(theirs) in digits(value) for value in ours)


def has(theirs, ours):
    """One of several things that the other program shows."""
    return any(str(value) in map(str, theirs) for value in ours)


def mark(name):
    def agrees(theirs, ours):
        marked = any(name in value for value in ours)
        return marked == (str(theirs).lower() in ("yes", "1"))
    agrees.__doc__ = f"Whether \"{name}\" is among the marks."
    return agrees


def cover(theirs, ours):
    """"Cover (front)"."""
    return {"Cover (front)": "front cover"}.get(theirs) in ours


def ratio_of(theirs, ours):
    """A ratio, in two keys."""
    ratio = number_of(ours[0]) / number_of(ours[1])
    return is_close(number_of(theirs), ratio, 0.0006)


def progressive(theirs, ours):
    """QuickTime's "1 0" and Matroska's 2."""
    return str(theirs) in ("1 0", "2") and "progressive" in ours


def chapter_start(theirs, ours):
    """The second field of a chapter's frame, in milliseconds."""
    return thousandths(theirs[1], ours)


def chapter_list(theirs, ours):
    """Each chapter as "1 Title", with the second that it begins at."""
    return theirs == [f"{value['start']:g} {value['title']}" for value in ours]
