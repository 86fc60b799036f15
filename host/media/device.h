#pragma once
/// Pipes and devices. Whatever the program does with them it waits for the other side in short turns, so that
/// one that stands still doesn't keep a program that was asked to end.
#include <atomic>
#include <string>

#include "host/media/input.h"
#include "host/media/input_owner.h"

namespace aveffect {

/// Whether the path names something that is neither an ordinary file nor a directory.
bool IsDevice(const std::string& path);

/// Whether the name stands for standard output, which is written to as it comes, whatever it is.
inline bool IsStandardOutput(const std::string& path) { return path == "-"; }

/// Whether what is written there can't be changed afterwards: standard output, pipes and sockets.
bool IsStream(const std::string& path);

/// For the container library to read from. The interrupt ends the wait; it outlives what is returned. Throws
/// Error (Input).
DeviceInputPtr OpenDeviceInput(const std::string& path, const ReadInterrupt& interrupt);

/// A descriptor that never blocks, unless standard output is something that blocks; negative, with errno,
/// when the device can't be opened: ECANCELED when the flag was set while it waited for a pipe's reader.
int OpenDeviceOutput(const std::string& path, const std::atomic<bool>& cancel);

/// Waits until the descriptor takes more bytes, or says why not. False when the flag is set.
bool WaitForRoom(int file, const std::atomic<bool>& cancel);

} // namespace aveffect
