// The interactive session as a person uses it: icphost on a pseudo-terminal,
// keys typed, the screen read back.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

// icphost in a terminal of its own, with its history in `history`.
class Terminal {
public:
    explicit Terminal(const std::filesystem::path& history) {
        winsize size{};
        size.ws_row = 40;
        size.ws_col = 100;
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
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool started() const { return pid_ > 0; }

    // Waits for the prompt, then types the line and Return, as a person does.
    void enter(const std::string& line) {
        ASSERT_TRUE(wait_for("icp> ")) << screen_;
        type(line + "\r");
    }
    // Waits for the prompt, then types the start of a line.
    void start(const std::string& keys) {
        ASSERT_TRUE(wait_for("icp> ")) << screen_;
        type(keys);
    }
    // Ends the input at the prompt: the session's exit status.
    int leave() {
        EXPECT_TRUE(wait_for("icp> ")) << screen_;
        type("\x04");
        return exit_status(/*again=*/true);
    }

    void type(const std::string& keys) {
        ASSERT_EQ(write(fd_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Reads until `text` has appeared since the last wait; true if it did
    // within a few seconds. What was read up to and including it is gone.
    bool wait_for(const std::string& text) {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        for (;;) {
            if (const auto at = screen_.find(text); at != std::string::npos) {
                screen_.erase(0, at + text.size());
                return true;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left <= 0ms) return false;
            pollfd p{fd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(left.count())) <= 0) return false;
            char buffer[4096];
            const ssize_t n = read(fd_, buffer, sizeof buffer);
            if (n <= 0) return false;
            screen_.append(buffer, static_cast<std::size_t>(n));
            strip_escapes();
        }
    }

    // The exit status once the session ends; -1 if it does not in time.
    // With `again`, the line is cleared (Ctrl-U) and Ctrl-D pressed once more
    // every half second, as a person does when the first one went unnoticed:
    // on a loaded machine the key can arrive while the line editor has the
    // terminal out of raw mode, and then lands in the line as a character.
    int exit_status(bool again = false) {
        for (int i = 0; i < 200; ++i) {
            if (again && i > 0 && i % 10 == 0) type("\x15\x04");
            int status = 0;
            char buffer[4096];
            // Drain, so that the child can finish writing.
            for (pollfd p{fd_, POLLIN, 0}; poll(&p, 1, 0) > 0;) {
                const ssize_t n = read(fd_, buffer, sizeof buffer);
                if (n <= 0) break;
                screen_.append(buffer, static_cast<std::size_t>(n));
            }
            if (waitpid(pid_, &status, WNOHANG) == pid_) {
                exited_ = true;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            usleep(50'000);
        }
        return -1;
    }

    const std::string& rest() const { return screen_; }

private:
    // Line editing moves the cursor with "ESC [ ... letter" sequences: the
    // test reads the text around them.
    void strip_escapes() {
        for (std::size_t at = screen_.find('\x1b'); at != std::string::npos; at = screen_.find('\x1b', at)) {
            std::size_t end = at + 1;
            if (end < screen_.size() && screen_[end] == '[') {
                ++end;
                while (end < screen_.size() && !(screen_[end] >= '@' && screen_[end] <= '~')) ++end;
            }
            if (end >= screen_.size()) return;  // the rest is still to come
            screen_.erase(at, end + 1 - at);
        }
    }

    pid_t pid_ = -1;
    int fd_ = -1;
    bool exited_ = false;
    std::string screen_;
};

class Session : public testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("icphost_session_" + std::to_string(getpid()) + "_" +
                testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
        history_ = dir_ / "history";
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::filesystem::path dir_;
    std::filesystem::path history_;
};

constexpr const char* tab = "\t";

TEST_F(Session, CompleteCorrectAndRun) {
    Terminal t(history_);
    ASSERT_TRUE(t.started());
    t.enter("h = ICPUSB_Opendevice(\"USB2019\", 1)");
    EXPECT_TRUE(t.wait_for("unknown function 'ICPUSB_Opendevice' (did you mean 'ICPUSB_OpenDevice'?)")) << t.rest();
    t.start("h = ICPUSB_Op");
    t.type(tab);
    // The editor redraws from the cursor: the completed part shows, and the
    // value printed below proves the whole name.
    EXPECT_TRUE(t.wait_for("enDevice(")) << testing::PrintToString(t.rest());
    t.type("\"USB2019\", 1)\r");
    t.enter("ICPUSB_GetAITotal(h)");
    EXPECT_TRUE(t.wait_for("\r\n8\r\n")) << t.rest();
    EXPECT_EQ(t.leave(), 0);
}

// Names with blanks complete to their common start, then list the choices;
// variables complete too.
TEST_F(Session, TabCompletesNamesWithBlanksAndVariables) {
    Terminal t(history_);
    t.start("ICPCOM R");
    t.type(tab);
    EXPECT_TRUE(t.wait_for("ec Cmd ")) << t.rest();
    t.type(tab);
    EXPECT_TRUE(t.wait_for("ICPCOM Rec Cmd Exec")) << t.rest();
    EXPECT_TRUE(t.wait_for("ICPCOM Rec Cmd Start")) << t.rest();
    t.type("St");
    t.type(tab);
    EXPECT_TRUE(t.wait_for("St")) << t.rest();
    t.type("a");
    t.type(tab);
    EXPECT_TRUE(t.wait_for("rt(")) << t.rest();
    t.type(")\r");
    EXPECT_TRUE(t.wait_for("true")) << t.rest();
    t.enter("measured_value = 2.5");
    t.start("[measu");
    t.type(tab);
    EXPECT_TRUE(t.wait_for("red_value")) << t.rest();
    t.type("]\r");
    EXPECT_TRUE(t.wait_for("[2.5]")) << t.rest();
    EXPECT_EQ(t.leave(), 0);
}

// Session commands, directives, a table, and errors that name what fits.
TEST_F(Session, CommandsDirectivesAndTables) {
    Terminal t(history_);
    t.enter("help ICPCOM_Rec_Cmd_Exec");
    EXPECT_TRUE(t.wait_for("did you mean 'ICPCOM Rec Cmd Exec'?")) << t.rest();
    t.enter("help ICP_Loaded");
    EXPECT_TRUE(t.wait_for("Result:      Boolean")) << t.rest();
    t.enter("functions pwmduty");
    EXPECT_TRUE(t.wait_for("Serial PWM\r\n==========\r\n\r\n  ICPCOM_GetPWMDuty")) << t.rest();
    t.enter("ICPUSB_ListDevice()");
    EXPECT_TRUE(t.wait_for("Device ID")) << t.rest();
    EXPECT_TRUE(t.wait_for("\r\n")) << t.rest();
    t.enter("[1 2]");
    EXPECT_TRUE(t.wait_for("error: expected ',' or ']' in a vector, found '2]'\r\n    [1 2]\r\n       ^")) << t.rest();
    t.enter(":trace on");
    EXPECT_TRUE(t.wait_for("sim: trace on")) << t.rest();
    t.enter("ICP_Loaded()");
    EXPECT_TRUE(t.wait_for("true")) << t.rest();
    t.enter(":unplug USB2019 9");
    EXPECT_TRUE(t.wait_for("error: the rig has no USB2019 board 9")) << t.rest();
    EXPECT_EQ(t.leave(), 0);
}

// History lives on in the file the environment names, and only there.
TEST_F(Session, HistoryIsKeptAcrossSessions) {
    {
        Terminal t(history_);
        t.enter("\"from the first session\"");
        EXPECT_TRUE(t.wait_for("\"from the first session\"\r\n")) << t.rest();
        EXPECT_EQ(t.leave(), 0);
    }
    std::ifstream saved(history_);
    std::string text((std::istreambuf_iterator<char>(saved)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("first"), std::string::npos) << text;

    Terminal t(history_);
    t.enter("\x10");  // Ctrl-P: the line before, run again
    // The recalled line, then its value (the line editor may redraw the
    // recalled line in pieces, so the two are looked for one after the other).
    EXPECT_TRUE(t.wait_for("\"from the first session\"")) << t.rest();
    EXPECT_TRUE(t.wait_for("\"from the first session\"\r\n")) << t.rest();
    EXPECT_EQ(t.leave(), 0);
}

}  // namespace
