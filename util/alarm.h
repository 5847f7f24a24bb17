// util/alarm.h - the one tone that error records of the event log share with MsgBeep.
#pragma once

namespace tk::util {

/// 2300 Hz for 50 ms; blocks for that long.
void SoundAlarm();

}  // namespace tk::util
