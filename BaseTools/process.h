#pragma once
/// Child processes.
#include <atomic>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace BaseTool {

/// Splits a command line at blanks. Between double quotes blanks are kept; a backslash, in quotes or outside,
/// takes the next character as it is. Quotes and such backslashes do not appear in the arguments, and an
/// argument without a character is none.
void parse_cmd_line(const std::string& commandLine, std::vector<std::string>& args);

/// Runs a program once and watches it until it ends. The operations beside Run and its like throw
/// CBaseException 10021019 "The process has not run" before a child was started. Used by one thread at a
/// time.
class CBaseToolProcess {
public:
    explicit CBaseToolProcess(std::string commandLine);
    /// Waits for the child, or leaves it to itself (see SetWaitWhenDestruct).
    virtual ~CBaseToolProcess();
    CBaseToolProcess(const CBaseToolProcess&) = delete;
    CBaseToolProcess& operator=(const CBaseToolProcess&) = delete;

    /// Starts the child; one started suspended does nothing until Resume(). A program that can't be started
    /// gives a child with exit code 254. False when there is no child, for want of memory or of processes: it
    /// can be tried again then. A second call after one that had a child throws CBaseException 10021019 "The
    /// process has run already".
    bool Run(bool startSuspended) { return RunInternal(startSuspended, false); }
    /// The same for a child that outlives the terminal: it ignores SIGHUP.
    bool RunBackgroundly(bool startSuspended) { return RunInternal(startSuspended, true); }

    /// SIGSTOP and SIGCONT; false when that failed or the child has ended.
    bool Suspend();
    bool Resume();

    /// 1 when the child has ended, else 0. The timeout is in milliseconds, 0xFFFFFFFF for none.
    int Wait(unsigned timeout);

    /// Kills the child and waits for that; false when it could not be killed, for one because it has ended.
    /// The code given becomes the exit code either way.
    bool Terminate(unsigned code);

    /// False while the child lives. 0xFFFFFFFF is the code of one that a signal ended.
    bool GetExitCode(unsigned& code) const;

    /// The child's id, 0 when there is none. It stays when the child has ended.
    pid_t GetProcesspId() const { return m_nProcessId; }

    /// True at first.
    void SetWaitWhenDestruct(bool wait) { m_bWaitWhenDestruct = wait; }

private:
    bool RunInternal(bool startSuspended, bool background);
    void PrepareArguments();
    void StartAndWatch() noexcept;
    void WatchUntilEnded();
    bool Signal(int signal);
    void RequireRun() const;
    void JoinWatcher();

    bool m_bWaitWhenDestruct = true;
    std::atomic<pid_t> m_nProcessId = 0; // -1 while the watching thread starts the child
    std::thread m_Watcher;
    bool m_bStartSuspended = false;
    bool m_bBackground = false;
    std::atomic<unsigned> m_nExitCode = 0;
    std::string m_strCommandLine;
    std::vector<std::string> m_Arguments; // made before the fork: the new process may not allocate
    std::vector<char*> m_ArgumentPointers;

    // Neither waiting nor stopping uses the watching thread itself: it stays to be joined.
    std::atomic<bool> m_bEnded = false;
    std::atomic<bool> m_bStopWatching = false;
    // Held to signal the child and to take note of its end: once that is done the id may be another's.
    std::mutex m_ChildMutex;
};

} // namespace BaseTool
