// Real serial devices. A serial port (/dev/ttyUSB0, /dev/ttyS0, a
// /dev/serial/by-id/ link) goes through libserialport. A pseudo-terminal
// (/dev/pts/N, e.g. one that `icphost serve` offers) is one that
// libserialport 0.1 cannot open: it looks every port up in sysfs, where
// pseudo-terminals have no entry, and reads modem lines they do not have. Those
// get the few termios calls that a raw line needs.
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <libserialport.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>

#include "port.h"

namespace pacsdk {

namespace {

constexpr std::size_t message_chars = 31;

std::string naming(const std::string& problem, const std::string& name) {
    std::string text = problem + ": " + name;
    return text.size() <= message_chars ? text : problem;
}

std::string open_problem(int error) {
    switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV: return "No such device";
    case EACCES:
    case EPERM: return "Permission denied";
    case EBUSY: return "Device busy";
    default: return "Cannot open";
    }
}

class SerialPort final : public Port {
public:
    explicit SerialPort(sp_port* port) : port_(port) {}
    ~SerialPort() override {
        sp_close(port_);
        sp_free_port(port_);
    }
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    bool simulated() const override { return false; }
    void discard_input() override { sp_flush(port_, SP_BUF_INPUT); }

    Io write(std::string_view bytes, uint32_t timeout_ms) override {
        int n = sp_blocking_write(port_, bytes.data(), bytes.size(), timeout_ms);
        if (n < 0) return Io::failed;
        return static_cast<std::size_t>(n) == bytes.size() ? Io::done : Io::timeout;
    }

    Io read(std::string* out, uint32_t timeout_ms) override {
        char buffer[256];
        int n = sp_blocking_read_next(port_, buffer, sizeof buffer, timeout_ms);
        if (n < 0) return Io::failed;
        if (n == 0) return Io::timeout;
        out->append(buffer, static_cast<std::size_t>(n));
        return Io::done;
    }

private:
    sp_port* port_;
};

std::unique_ptr<Port> open_serial(const std::string& device, const std::string& shown, const LineSettings& s,
                                  std::string* why) {
    sp_port* port = nullptr;
    if (sp_get_port_by_name(device.c_str(), &port) != SP_OK) {
        *why = naming("Not a serial port", shown);
        return nullptr;
    }
    if (sp_open(port, SP_MODE_READ_WRITE) != SP_OK) {
        *why = naming(open_problem(sp_last_error_code()), shown);
        sp_free_port(port);
        return nullptr;
    }
    auto result = std::make_unique<SerialPort>(port);
    sp_parity parity = s.parity == 'O'   ? SP_PARITY_ODD
                       : s.parity == 'E' ? SP_PARITY_EVEN
                       : s.parity == 'M' ? SP_PARITY_MARK
                       : s.parity == 'S' ? SP_PARITY_SPACE
                                         : SP_PARITY_NONE;
    if (s.baud > INT_MAX || sp_set_baudrate(port, static_cast<int>(s.baud)) != SP_OK) {
        *why = "Baud rate not supported";
        return nullptr;
    }
    if (sp_set_bits(port, s.data_bits) != SP_OK || sp_set_parity(port, parity) != SP_OK ||
        sp_set_stopbits(port, s.stop_bits) != SP_OK || sp_set_flowcontrol(port, SP_FLOWCONTROL_NONE) != SP_OK) {
        *why = "Device refused the settings";
        return nullptr;
    }
    return result;
}

// ---- Pseudo-terminals ---------------------------------------------------------

class PtyPort final : public Port {
public:
    explicit PtyPort(int fd) : fd_(fd) {}
    ~PtyPort() override { ::close(fd_); }
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    bool simulated() const override { return false; }
    void discard_input() override { tcflush(fd_, TCIFLUSH); }

    Io write(std::string_view bytes, uint32_t timeout_ms) override {
        Deadline deadline(timeout_ms);
        while (!bytes.empty()) {
            ssize_t n = ::write(fd_, bytes.data(), bytes.size());
            if (n > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(n));
            } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
                return Io::failed;
            } else if (Io waited = wait(POLLOUT, deadline); waited != Io::done) {
                return waited;
            }
        }
        return Io::done;
    }

    Io read(std::string* out, uint32_t timeout_ms) override {
        Deadline deadline(timeout_ms);
        for (;;) {
            char buffer[256];
            ssize_t n = ::read(fd_, buffer, sizeof buffer);
            if (n > 0) {
                out->append(buffer, static_cast<std::size_t>(n));
                return Io::done;
            }
            // The other end closed: end of file, or EIO.
            if (n == 0 || (errno != EAGAIN && errno != EINTR)) return Io::failed;
            if (Io waited = wait(POLLIN, deadline); waited != Io::done) return waited;
        }
    }

private:
    struct Deadline {
        explicit Deadline(uint32_t ms)
            : limited(ms != 0), at(std::chrono::steady_clock::now() + std::chrono::milliseconds(ms)) {}
        bool limited;
        std::chrono::steady_clock::time_point at;
    };

    Io wait(short events, const Deadline& deadline) const {
        int ms = -1;
        if (deadline.limited) {
            auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.at - std::chrono::steady_clock::now());
            if (left.count() <= 0) return Io::timeout;
            ms = static_cast<int>(left.count());
        }
        pollfd p{fd_, events, 0};
        int r = ::poll(&p, 1, ms);
        if (r == 0) return Io::timeout;
        if (r < 0) return errno == EINTR ? Io::done : Io::failed;
        if ((p.revents & events) != 0) return Io::done;
        return (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0 ? Io::failed : Io::done;
    }

    int fd_;
};

bool speed_of(uint32_t baud, speed_t* speed) {
    struct Rate {
        uint32_t baud;
        speed_t speed;
    };
    static constexpr Rate rates[] = {{1200, B1200},     {2400, B2400},     {4800, B4800},     {9600, B9600},
                                     {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},
                                     {230400, B230400}, {460800, B460800}, {921600, B921600}};
    for (const auto& r : rates)
        if (r.baud == baud) {
            *speed = r.speed;
            return true;
        }
    return false;
}

std::unique_ptr<Port> open_pty(const std::string& device, const std::string& shown, const LineSettings& s,
                               std::string* why) {
    speed_t speed{};
    if (!speed_of(s.baud, &speed)) {
        *why = "Baud rate not supported";
        return nullptr;
    }
    int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        *why = naming(open_problem(errno), shown);
        return nullptr;
    }
    auto port = std::make_unique<PtyPort>(fd);
    termios t{};
    if (tcgetattr(fd, &t) != 0) {
        *why = naming("Not a serial port", shown);
        return nullptr;
    }
    cfmakeraw(&t);
    t.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cflag |= s.data_bits == 5 ? CS5 : s.data_bits == 6 ? CS6 : s.data_bits == 7 ? CS7 : CS8;
    if (s.parity != 'N') t.c_cflag |= PARENB;
    if (s.parity == 'O' || s.parity == 'M') t.c_cflag |= PARODD;
    if (s.parity == 'M' || s.parity == 'S') t.c_cflag |= CMSPAR;
    if (s.stop_bits == 2) t.c_cflag |= CSTOPB;
    // With O_NONBLOCK: EAGAIN when nothing is there, 0 only at a hangup.
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    if (cfsetispeed(&t, speed) != 0 || cfsetospeed(&t, speed) != 0 || tcsetattr(fd, TCSANOW, &t) != 0) {
        *why = "Device refused the settings";
        return nullptr;
    }
    return port;
}

}  // namespace

std::unique_ptr<Port> open_device(const std::string& path, const LineSettings& settings, std::string* why) {
    // Links (a stable name given to `icphost serve`, /dev/serial/by-id/...)
    // are followed: libserialport knows a port only by its /dev name.
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (!resolved) {
        *why = naming(open_problem(errno), path);
        return nullptr;
    }
    std::string device = resolved;
    std::free(resolved);
    if (device.rfind("/dev/pts/", 0) == 0) return open_pty(device, path, settings, why);
    return open_serial(device, path, settings, why);
}

}  // namespace pacsdk
