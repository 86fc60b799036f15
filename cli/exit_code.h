#pragma once
/// What the program's exit codes mean.
#include "host/support/error.h"

namespace aveffect {

enum ExitCode : int {
    kDone = 0,
    kUnexpected = 1,    ///< something that should not happen, such as memory running out
    kUsage = 2,         ///< the command line is wrong
    kInput = 3,         ///< the input is missing, unreadable, or no media
    kOutput = 4,        ///< the output exists or can't be written
    kEffect = 5,        ///< the plug-in is missing or an effect failed
    kDamagedInput = 6,  ///< the input ended early or was damaged; the output holds what could be decoded
    kDifferent = 7,     ///< what was compared differs
    kInterrupted = 128, ///< plus the number of the signal: 130 for SIGINT, 143 for SIGTERM, 129 for SIGHUP,
                        ///< 142 for SIGALRM, which --timeout sends
};

/// The same, for --help.
inline constexpr char kExitCodeHelp[] =
    "Exit codes:\n"
    "  0    done\n"
    "  1    something unexpected, such as memory running out\n"
    "  2    the command line is wrong\n"
    "  3    the input is missing, unreadable, or no media\n"
    "  4    the output exists or can't be written\n"
    "  5    the plug-in is missing or an effect failed\n"
    "  6    the input was damaged or ended early; the output holds what could\n"
    "       be decoded\n"
    "  7    what was compared differs\n"
    "  130  interrupted (SIGINT); 143 by SIGTERM, 129 by SIGHUP,\n"
    "       142 by --timeout";

/// The code for an error; signal is the number of the last signal received, 0 for none.
constexpr int ExitCodeFor(ErrorKind kind, int signal) {
    constexpr int kSigInt = 2;
    switch (kind) {
    case ErrorKind::Usage:
        return kUsage;
    case ErrorKind::Input:
        return kInput;
    case ErrorKind::Output:
        return kOutput;
    case ErrorKind::Effect:
        return kEffect;
    case ErrorKind::Interrupted:
        return kInterrupted + (signal != 0 ? signal : kSigInt);
    }
    return kUnexpected;
}

} // namespace aveffect
