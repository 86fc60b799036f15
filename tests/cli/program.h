#pragma once
/// Running programs, the one under test and the tools that make its clips, in a directory that goes away.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace test {

struct Outcome {
    int exitCode = -1; ///< when a signal ended the program: its number, negative
    std::string output;
    std::string messages;
};

/// A program with standard output and standard error going to files.
class RunningProgram {
public:
    RunningProgram(const std::vector<std::string>& command, const std::filesystem::path& workingDirectory);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Returns once the signal has reached the program, or it has ended.
    void Signal(int signal) const;
    /// Returns once the program has written this.
    void AwaitOutput(const std::string& text) const;
    /// What it has written so far.
    std::string Output() const;
    /// The test fails when the program takes longer than a minute.
    Outcome Wait();

private:
    bool Becomes(const std::function<bool()>& state) const; ///< within a minute

    std::filesystem::path m_files; ///< ".out" and ".err" are added
    int m_process = -1;
};

/// Each test has an empty directory of its own, in which programs run.
class ProgramTest : public ::testing::Test {
protected:
    ProgramTest();
    ~ProgramTest() override;

    std::string Path(const std::string& name) const { return (m_directory / name).string(); }
    /// Names in the directory, sorted.
    std::vector<std::string> Names() const;
    /// Runs aveffect.
    Outcome Aveffect(std::vector<std::string> arguments) const;
    std::vector<std::string> AveffectCommand(std::vector<std::string> arguments) const;
    /// Runs the ffmpeg program; the test fails when that fails.
    std::string Ffmpeg(const std::vector<std::string>& arguments) const;
    /// A test picture with noise that makes every frame another, lossless, 25 frames a second.
    void MakeClip(const std::string& name, const std::string& size, int frames) const;
    /// A still picture of one colour (RRGGBB).
    void MakeStill(const std::string& name, const std::string& colour) const;
    /// Every picture of a file as R, G, B bytes.
    std::string Pixels(const std::string& name) const;

    std::filesystem::path m_directory;
};

/// One line, with its line break, that starts with the program's name.
::testing::AssertionResult IsOneMessage(const std::string& text);

/// One such line or more.
::testing::AssertionResult AreMessages(const std::string& text);

/// Programs in that directory are found before others of their name.
void FindFirstIn(const std::string& directory);

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& bytes);

} // namespace test
