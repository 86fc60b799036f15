// What comes in and goes out besides ordinary clips: pipes, numbered pictures, and what photos say of
// themselves.
#include "tests/cli/program.h"

namespace {

using test::IsOneMessage;
using test::Outcome;

class Files : public test::ProgramTest {
protected:
    /// A shell's command in which $A is the program.
    Outcome Shell(const std::string& command) const {
        return test::RunningProgram({"sh", "-c", "A='" + AveffectCommand({})[0] + "'; " + command},
                                    m_directory)
            .Wait();
    }
    std::string Says(const std::string& command) const { return Shell(command).output; }
};

TEST_F(Files, GoThroughPipes) {
    MakeClip("in.mkv", "64x48", 25);
    EXPECT_EQ(
        Says("cat in.mkv | $A render - - --format matroska --codec ffv1 -e invert | $A render - back.mkv "
             "--codec ffv1 -e invert; $A compare in.mkv back.mkv > said; echo $?; "
             "mkfifo p; cat in.mkv > p & $A frame p - --format png | ffprobe -v error -show_entries "
             "stream=codec_name,width -of csv=p=0 -"),
        "0\npng,64\n");
    EXPECT_EQ(Says("$A transition in.mkv in.mkv - -e crossfade --format ismv > part.mp4; (echo head; $A "
                   "render in.mkv "
                   "- --format nut --codec ffv1) > all; head -c 5 all; tail -c +6 all | ffprobe -v error "
                   "-show_entries "
                   "format=format_name -of csv=p=0 -; ffprobe -v error -show_entries stream=codec_name -of "
                   "csv=p=0 part.mp4"),
              "head\nnut\nh264\n");
    // A pipe can't be gone back in: neither to write an index nor to read one.
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=640x480:d=2", "-c:v", "libx264", "-crf", "8", "late.mp4"});
    for (const auto& [command, word] :
         {std::pair("$A render in.mkv - --format mp4", "--format matroska"),
          std::pair("$A render in.mkv -", "needs --format"),
          std::pair("$A render in.mkv - --format foo", "'foo'"),
          std::pair("$A render in.mkv - --format nut --progress json", "--progress"),
          std::pair("cat late.mp4 | $A render - x.mkv", "faststart")}) {
        const Outcome refused = Shell(command);
        EXPECT_TRUE(IsOneMessage(refused.messages));
        EXPECT_NE(refused.messages.find(word), std::string::npos) << refused.messages;
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_EQ(
        Shell("$A render late.mp4 odd.name --format mov && ffprobe -v error -show_entries format=format_name "
              "-of csv=p=0 odd.name")
            .output,
        "\"mov,mp4,m4a,3gp,3g2,mj2\"\n");
}

TEST_F(Files, AreNumberedPictures) {
    MakeClip("in.mkv", "64x48", 12);
    EXPECT_EQ(
        Shell("mkdir f; $A render in.mkv f/%03d.png -e invert && ls f | tail -1; ls f | wc -l; rm f/001.png; "
              "for i in f/*; do mv $i f/9$(basename $i); done; $A render f/9%03d.png back.mkv --codec ffv1 "
              "-e invert; ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 "
              "back.mkv")
            .output,
        "012.png\n12\n11\n");
    // What is there is left alone, whole, until someone says otherwise.
    const Outcome stopped = Shell("mkdir g; echo mine > g/3.png; $A render in.mkv g/%d.png");
    EXPECT_EQ(stopped.exitCode, 4);
    EXPECT_NE(stopped.messages.find("g/3.png exists"), std::string::npos) << stopped.messages;
    EXPECT_EQ(Says("cat g/3.png; ls -A g | tr '\\n' ' '"), "mine\n1.png 2.png 3.png ");
    EXPECT_EQ(Shell("$A render in.mkv g/%d.png --overwrite; ls g | wc -l").output, "12\n");
    // A file that is really called so is that file.
    MakeStill("100%d.png", "ff0000");
    EXPECT_EQ(Shell("$A render 100%d.png red.ppm && ls red.ppm").output, "red.ppm\n");
    EXPECT_TRUE(IsOneMessage(Shell("$A render no%d.png x.mkv").messages));
}

TEST_F(Files, KeepWhatPhotosSay) {
    std::string profile(132, '\0');
    profile.replace(0, 4, std::string("\0\0\0\x84", 4))
        .replace(12, 12, "mntrRGB XYZ ")
        .replace(36, 4, "acsp");
    test::WriteFile(Path("rgb.icc"), profile);
    std::filesystem::copy_file(AVEFFECT_TEST_DATA "/host/photo.jpg", Path("p.jpg"));
    const std::string write =
        "exiftool -q -m -overwrite_original '-icc_profile<=rgb.icc' -Orientation#=6 -Make=Acme ";
    ASSERT_EQ(Shell(write + "-GPSLatitude=48.5 -GPSLatitudeRef=N -JFIF:XResolution=254 -JFIF:YResolution=254 "
                            "-JFIF:ResolutionUnit=inches '-ThumbnailImage<=p.jpg' p.jpg")
                  .exitCode,
              0);
    ASSERT_EQ(Shell("ffmpeg -v error -i p.jpg t.png; " + write +
                    "-PNG-pHYs:PixelsPerUnitX=10000 -PNG-pHYs:PixelsPerUnitY=10000 "
                    "-PNG-pHYs:PixelUnits=meters -Comment=words t.png")
                  .exitCode,
              0);
    const std::string kept = "1|Acme|48.5|-|", stripped = "-|-|-|-|";
    struct Case {
        std::string command, output,
            said; ///< orientation, maker, latitude, small picture, densities, comment
    };
    for (const auto& [command, output, said] :
         {Case{"render p.jpg a.jpg", "a.jpg", kept + "254|-|-"},
          Case{"render p.jpg b.png", "b.png", kept + "-|10000|-"},
          Case{"batch p.jpg --to c --extension webp", "c/p.webp", kept + "-|-|-"},
          Case{"frame c/p.webp d.jpg", "d.jpg", kept + "-|-|-"},
          Case{"render --strip p.jpg e.jpg", "e.jpg", stripped + "254|-|-"},
          Case{"frame --strip b.png f.png", "f.png", stripped + "-|10000|-"},
          Case{"render t.png g.png", "g.png", "1|Acme|-|-|-|10000|words"}}) {
        const Outcome made = Shell("$A " + command + " -e gray");
        EXPECT_EQ(made.exitCode, 0) << made.messages;
        EXPECT_EQ(Says("exiftool -m -f -n -p "
                       "'$Orientation|$IFD0:Make|$GPSLatitude|$ThumbnailImage|$JFIF:XResolution|"
                       "$PNG-pHYs:PixelsPerUnitX|$PNG:Comment' " +
                       output),
                  said + "\n")
            << output;
        EXPECT_TRUE(Says("exiftool -b -icc_profile " + output) == profile) << output;
        EXPECT_EQ(Shell("ffmpeg -v error -i " + output + " -f null -").messages, "") << output;
    }
}

} // namespace
