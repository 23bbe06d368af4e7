#include "icphost/serve.h"

#include <iostream>

#if defined(__linux__)
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <vector>

#include "pacsdk_sim.h"

namespace icphost {

namespace {

volatile std::sig_atomic_t stop_requested = 0;

extern "C" void request_stop(int) { stop_requested = 1; }

// Without SA_RESTART, so that a signal ends the wait in poll().
void on_stop_signals() {
    struct sigaction action {};
    action.sa_handler = request_stop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool write_all(int fd, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            done += static_cast<std::size_t>(n);
        } else if (n < 0 && errno == EAGAIN) {
            pollfd p{fd, POLLOUT, 0};
            ::poll(&p, 1, 100);
        } else if (n < 0 && errno != EINTR) {
            return false;
        }
    }
    return true;
}

// The emulated modules' clock follows real time while they are served.
class Clock {
public:
    void catch_up() {
        auto now = std::chrono::steady_clock::now();
        auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now - last_).count();
        if (ms <= 0) return;
        pacsim::advance_ms(static_cast<uint32_t>(ms));
        last_ += std::chrono::milliseconds(ms);
    }

private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

}  // namespace

int serve(const std::string& port_arg, const std::string& link_path) {
    auto ports = pacsim::emulated_ports();
    std::string port = port_arg;
    if (port.empty() && !ports.empty()) port = ports.front();
    if (port.empty() || std::find(ports.begin(), ports.end(), port) == ports.end()) {
        std::cerr << "icphost: the rig has no emulated port " << (port.empty() ? "at all" : port) << '\n';
        return 2;
    }

    int master = -1;
    int slave = -1;
    char name[256] = {};
    if (::openpty(&master, &slave, name, nullptr, nullptr) != 0) {
        std::cerr << "icphost: cannot open a pseudo-terminal: " << std::strerror(errno) << '\n';
        return 2;
    }
    // Raw until a client sets the line itself: no echo, CR stays CR. Our own
    // end of the slave stays open so that clients may come and go.
    termios t{};
    tcgetattr(slave, &t);
    cfmakeraw(&t);
    tcsetattr(slave, TCSANOW, &t);
    ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);

    std::error_code ec;
    if (!link_path.empty()) {
        if (std::filesystem::is_symlink(link_path, ec)) std::filesystem::remove(link_path, ec);
        std::filesystem::create_symlink(name, link_path, ec);
        if (ec) {
            std::cerr << "icphost: cannot make the link " << link_path << ": " << ec.message() << '\n';
            ::close(slave);
            ::close(master);
            return 2;
        }
    }
    std::cout << name << '\n' << std::flush;
    std::cerr << "icphost: " << port << "'s modules answer on " << name
              << (link_path.empty() ? "" : " (" + link_path + ")") << "; Ctrl-C ends\n";

    on_stop_signals();
    Clock clock;
    int status = 0;
    while (!stop_requested) {
        pollfd p{master, POLLIN, 0};
        int r = ::poll(&p, 1, 100);
        clock.catch_up();
        if (r <= 0) continue;
        char buffer[512];
        ssize_t n = ::read(master, buffer, sizeof buffer);
        if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (n <= 0) {
            std::cerr << "icphost: the pseudo-terminal failed: " << std::strerror(errno) << '\n';
            status = 1;
            break;
        }
        std::string replies = pacsim::wire_input(port, std::string(buffer, static_cast<std::size_t>(n)));
        if (!replies.empty() && !write_all(master, replies)) {
            std::cerr << "icphost: cannot write to the pseudo-terminal: " << std::strerror(errno) << '\n';
            status = 1;
            break;
        }
    }
    if (!link_path.empty()) std::filesystem::remove(link_path, ec);
    ::close(slave);
    ::close(master);
    return status;
}

}  // namespace icphost

#else

namespace icphost {

int serve(const std::string&, const std::string&) {
    std::cerr << "icphost: serve is not available on this system (it needs Linux pseudo-terminals)\n";
    return 2;
}

}  // namespace icphost

#endif
