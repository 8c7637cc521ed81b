/*
 * A small host in C: prints the kind of each file, describes the videos among them, and then waits
 * for another process to report that the library has changed (as "kolum notify post" does).
 *
 *   watch FILE...
 */
#include <kolum/kolum.h>
#include <stdio.h>

enum { PATIENCE_IN_SECONDS = 10 };

static void describe(const char* path) {
  MediaInfo* info = NULL;
  int i;
  if (GetMediaInfo(path, &info, 0, NULL) != 0) {
    printf("  cannot be probed\n");
    return;
  }
  printf("  %u s, %d streams", info->duration, info->streamCount);
  for (i = 0; i < info->streamCount; ++i) {
    const MediaStreamInfo* stream = &info->streams[i];
    if (stream->streamType == MEDIA_STREAM_VIDEO) printf(", %dx%d", stream->width, stream->height);
  }
  printf("\n");
  Free_MediaInfo(info);
}

static void classify(const char* path) {
  unsigned int row = 0;
  unsigned int tag = 0;
  const int kind = KoLUM_GetFilenameType(path, &row, MEDIA_KIND_BITS_ALL, &tag);
  printf("%s: kind %d\n", path, kind);
  if (kind == MEDIA_KIND_VIDEO) describe(path);
}

static void waitForChange(void) {
  switch (KoLUM_TimedWaitNotification(PATIENCE_IN_SECONDS)) {
    case NOTIFICATION_RECEIVED:
      printf("the library has changed\n");
      break;
    case NOTIFICATION_TIMED_OUT:
      printf("no change\n");
      break;
    default:
      perror("waiting");
  }
}

int main(int argc, char** argv) {
  int i;
  if (KoLUM_Init(NULL) != 0) {
    fprintf(stderr, "the notification channels cannot be opened\n");
    return 1;
  }
  for (i = 1; i < argc; ++i) classify(argv[i]);
  waitForChange();
  KoLUM_UnInit();
  return 0;
}
