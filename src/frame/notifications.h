// The two channels that processes share, for changes and for stops.
#ifndef KOLUM_FRAME_NOTIFICATIONS_H
#define KOLUM_FRAME_NOTIFICATIONS_H

namespace kolum::frame {

// Results are those of the public functions in <kolum/frame.h>.
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
