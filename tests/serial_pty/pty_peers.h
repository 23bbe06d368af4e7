// The two ends a test puts on a pseudo-terminal: `icphost
// serve` in a child process, or a scripted peer in a thread.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

extern char** environ;

namespace pty_test {

// Reads what fd gives until until_char (included) or ms pass.
inline std::string read_until(int fd, char until_char, int ms) {
    std::string got;
    auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (got.find(until_char) == std::string::npos) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd p{fd, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&p, 1, static_cast<int>(left.count())) <= 0) break;
        char c[256];
        ssize_t n = ::read(fd, c, sizeof c);
        if (n <= 0) break;
        got.append(c, static_cast<std::size_t>(n));
    }
    return got;
}

// `icphost serve`, ended when this goes.
class ServedPort {
public:
    ServedPort() {
        int out[2];
        if (::pipe(out) != 0) throw std::runtime_error("pipe");
        char* argv[] = {const_cast<char*>(ICPHOST_FILE), const_cast<char*>("serve"), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        posix_spawn_file_actions_addclose(&actions, out[0]);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        const int spawned = posix_spawn(&pid_, ICPHOST_FILE, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        if (spawned == 0) device_ = read_until(out[0], '\n', 5000);
        ::close(out[0]);
        if (spawned != 0 || device_.empty()) throw std::runtime_error("icphost serve did not start");
        device_.pop_back();
    }
    ~ServedPort() {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    ServedPort(const ServedPort&) = delete;
    ServedPort& operator=(const ServedPort&) = delete;

    const std::string& device() const { return device_; }

private:
    pid_t pid_ = -1;
    std::string device_;
};

// A pseudo-terminal whose far end this test writes by hand.
class Peer {
public:
    Peer() {
        char name[256] = {};
        if (::openpty(&master_, &slave_, name, nullptr, nullptr) != 0) throw std::runtime_error("openpty");
        termios t{};
        ::tcgetattr(slave_, &t);
        ::cfmakeraw(&t);
        ::tcsetattr(slave_, TCSANOW, &t);
        device_ = name;
    }
    ~Peer() {
        if (thread_.joinable()) thread_.join();
        hang_up();
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    const std::string& device() const { return device_; }
    // Our own descriptor of the device end: its settings are the device's.
    int device_fd() const { return slave_; }

    // Once a command line has come, sends reply; then hangs up if asked.
    void answer(std::string reply, bool then_hang_up = false) {
        thread_ = std::thread([this, reply, then_hang_up] {
            read_until(master_, '\r', 2000);
            if (!reply.empty() && ::write(master_, reply.data(), reply.size()) < 0) return;
            if (then_hang_up) hang_up();
        });
    }

private:
    void hang_up() {
        if (master_ >= 0) ::close(master_);
        if (slave_ >= 0) ::close(slave_);
        master_ = slave_ = -1;
    }

    int master_ = -1;
    int slave_ = -1;
    std::string device_;
    std::thread thread_;
};

}  // namespace pty_test
