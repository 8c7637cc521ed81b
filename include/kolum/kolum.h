/*
 * libkolum, the media library's per-file worker: everything it offers.
 *
 * Each family has its own header. What a host process must supply is in <kolum/host.h>.
 */
#ifndef KOLUM_KOLUM_H
#define KOLUM_KOLUM_H

#include <kolum/audio.h>
#include <kolum/config.h>
#include <kolum/datetime.h>
#include <kolum/dlna.h>
#include <kolum/export.h>
#include <kolum/filetype.h>
#include <kolum/frame.h>
#include <kolum/geocode.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>
#include <kolum/photo.h>
#include <kolum/server.h>
#include <kolum/socket.h>
#include <kolum/thumbnail.h>
#include <kolum/video.h>

#endif
