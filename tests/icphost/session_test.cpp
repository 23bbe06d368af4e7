// The interactive session as a person uses it: icphost on a pseudo-terminal,
// keys typed, the screen read back.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class Terminal {
public:
    explicit Terminal(const std::filesystem::path& history) {
        winsize size{.ws_row = 40, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
        pid_ = forkpty(&fd_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            setenv("ICPHOST_HISTORY", history.c_str(), 1);
            setenv("TERM", "xterm", 1);
            execl(ICPHOST_PROGRAM, ICPHOST_PROGRAM, static_cast<char*>(nullptr));
            _exit(127);
        }
    }
    ~Terminal() {
        if (pid_ > 0 && !exited_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (fd_ >= 0) close(fd_);
    }

    void type(const std::string& keys) {
        ASSERT_EQ(write(fd_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Reads until `text` has appeared since the last wait; true if it did
    // within a few seconds. What was read up to and including it is gone.
    bool wait_for(const std::string& text) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        for (;;) {
            if (const auto at = screen_.find(text); at != std::string::npos) {
                screen_.erase(0, at + text.size());
                return true;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd p{fd_, POLLIN, 0};
            if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0 || !read_some()) return false;
            strip_escapes();
        }
    }

    // Ends the input at the prompt: the session's exit status, -1 if it does
    // not end in time. The line is cleared (Ctrl-U) and Ctrl-D pressed again
    // every half second, as a person does when the first one went unnoticed:
    // on a loaded machine the key can arrive while the line editor has the
    // terminal out of raw mode, and then lands in the line as a character.
    int leave() {
        EXPECT_TRUE(wait_for("icp> ")) << screen_;
        type("\x04");
        for (int i = 1; i <= 200; ++i) {
            for (pollfd p{fd_, POLLIN, 0}; poll(&p, 1, 0) > 0 && read_some();) {
            }  // drained, so that the child can finish writing
            int status = 0;
            if (waitpid(pid_, &status, WNOHANG) == pid_) {
                exited_ = true;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            usleep(50'000);
            if (i % 10 == 0) type("\x15\x04");
        }
        return -1;
    }

    const std::string& rest() const { return screen_; }

private:
    bool read_some() {
        char buffer[4096];
        const ssize_t n = read(fd_, buffer, sizeof buffer);
        if (n > 0) screen_.append(buffer, static_cast<std::size_t>(n));
        return n > 0;
    }
    // Line editing moves the cursor with "ESC [ ... letter" sequences: the
    // test reads the text around them (a sequence cut short goes once whole).
    void strip_escapes() { screen_ = std::regex_replace(screen_, std::regex("\x1b(\\[[0-?]*[ -/]*[@-~]|[^\\[])"), ""); }

    pid_t pid_ = -1;
    int fd_ = -1;
    bool exited_ = false;
    std::string screen_;
};

// Keys typed, then the texts the screen shows in that order; after Enter the
// next keys wait for the prompt.
struct Step {
    std::string keys;
    std::vector<std::string> shows;
};

void play(Terminal&& t, const std::vector<Step>& steps) {
    bool at_prompt = true;
    for (const auto& [keys, shows] : steps) {
        ASSERT_TRUE(!at_prompt || t.wait_for("icp> ")) << t.rest();
        t.type(keys);
        at_prompt = keys.ends_with('\r');
        for (const auto& text : shows) EXPECT_TRUE(t.wait_for(text)) << keys << testing::PrintToString(t.rest());
    }
    EXPECT_EQ(t.leave(), 0);
}

// Tab completion (names with blanks to their common start, then the
// choices; variables; help's argument), session commands, directives and
// tables; then history lives on in the file the environment names, and the
// next session recalls it.
TEST(Session, CompleteCorrectRunAndRecall) {
    const auto history = std::filesystem::temp_directory_path() / ("icphost_history_" + std::to_string(getpid()));
    // The editor redraws from the cursor: the completed part shows, and the
    // value printed after proves the whole name.
    play(Terminal(history), {{"h = ICPUSB_Op\t", {"enDevice("}},
                             {"\"USB2019\", 1)\r", {}},
                             {"ICPUSB_GetAITotal(h)\r", {"\r\n8\r\n"}},
                             {"ICPCOM R\t", {"ec Cmd "}},
                             {"\t", {"ICPCOM Rec Cmd Exec", "ICPCOM Rec Cmd Start"}},
                             {"Sta\t", {"rt("}},
                             {")\r", {"true"}},
                             {"measured_value = 2.5\r", {}},
                             {"[measu\t", {"red_value"}},
                             {"]\r", {"[2.5]"}},
                             {"help ICP_Loa\t\r", {"Result:      Boolean"}},
                             {"functions pwmduty\r", {"Serial PWM\r\n==========\r\n\r\n  ICPCOM_GetPWMDuty"}},
                             {"ICPUSB_ListDevice()\r", {"Device ID"}},
                             {":unpl\tUSB2019 9\r", {"error: the rig has no USB2019 board 9"}},
                             {"\"from the first session\"\r", {"\"from the first session\"\r\n"}}});
    std::ifstream saved(history);
    const std::string text{std::istreambuf_iterator<char>(saved), {}};
    EXPECT_NE(text.find("first"), std::string::npos) << text;

    // Ctrl-P: the line before, run again. The line editor may redraw the
    // recalled line in pieces: the line, then its value.
    play(Terminal(history), {{"\x10\r", {"\"from the first session\"", "\"from the first session\"\r\n"}}});
    std::filesystem::remove(history);
}

}  // namespace
