#include <kolum/frame.h>

#include <cstring>

#include "base/appliance.h"
#include "frame/notifications.h"

namespace frame = kolum::frame;

char* g_localWorkingPath = nullptr;

namespace {

bool isInitialised = false;

}  // namespace

int KoLUM_Init(const char* workingPath) {
  if (isInitialised) return 0;
  // Never freed, even when the call fails: a caller may hold the pointer.
  g_localWorkingPath = strdup(workingPath != nullptr ? workingPath : kolum::kApplianceTools);
  isInitialised = frame::openChannels();
  return isInitialised ? 0 : 1;
}

int KoLUM_UnInit() {
  return frame::closeChannels();
}

int KoLUM_Notification() {
  return frame::postChange();
}

int KoLUM_StopNotification() {
  return frame::postStop();
}

int KoLUM_LazyNotification() {
  return frame::postChangeLazily();
}

int KoLUM_WaitNotification() {
  return frame::waitForChange();
}

int KoLUM_TimedWaitNotification(int seconds) {
  return frame::waitForChange(seconds);
}

int KoLUM_WaitStopNotification() {
  return frame::waitForStop();
}

int KoLUM_WaitStopNotificationTimeOut(int seconds) {
  return frame::waitForStop(seconds);
}

int KoLUM_ClearNotification() {
  return frame::clearChanges();
}

int KoLUM_ClearStopNotification() {
  return frame::clearStops();
}
