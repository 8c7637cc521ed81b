// The two process-shared channels, of changes and of stops.
#ifndef KOLUM_FRAME_NOTIFICATIONS_H
#define KOLUM_FRAME_NOTIFICATIONS_H

namespace kolum::frame {

// Results are those of the public functions of <kolum/frame.h>.
bool openChannels();
int closeChannels();

int postChange();
int postChangeLazily();
int waitForChange();
int waitForChange(int seconds);
int clearChanges();

int postStop();
int waitForStop();
int waitForStop(int seconds);
int clearStops();

}  // namespace kolum::frame

#endif
