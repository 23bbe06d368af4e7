// Bytes -> a sequence of script function calls on the default rig, through
// the catalogue: every function, every argument a script can build, and the
// handles and results of earlier calls as arguments of later ones.
//
// Layout: per call, one byte picks the function (modulo the catalogue's
// size), then per parameter one byte picks the argument's form, followed by
// the bytes that form needs.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "NvMathLib.h"
#include "pacsdk_sim.h"
#include "com/port.h"
#include "plugin/catalogue.h"
#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usbio_sim.h"

using icp::nvValue;
namespace vt = NuvarelMath::ValueTypes;

namespace {

constexpr std::size_t max_calls = 48;
constexpr std::size_t max_pool = 16;

class Reader {
public:
    Reader(const std::uint8_t* data, std::size_t size) : p_(data), end_(data + size) {}
    bool empty() const { return p_ == end_; }
    std::uint8_t byte() { return p_ == end_ ? 0 : *p_++; }
    template <class T>
    T raw() {
        T v{};
        std::uint8_t bytes[sizeof(T)] = {};
        for (auto& b : bytes) b = byte();
        std::memcpy(&v, bytes, sizeof(T));
        return v;
    }
    std::string text(std::size_t n) {
        std::string s;
        while (n-- > 0 && p_ != end_) s += static_cast<char>(*p_++);
        return s;
    }

private:
    const std::uint8_t* p_;
    const std::uint8_t* end_;
};

nvValue integer(long long i) { return nvValue(vt::nvInteger(i)); }
nvValue real(double x) { return icp::make::real(x); }

nvValue numbers(unsigned n, int first) {
    return icp::make::vector(n, [&](unsigned i) { return integer(first + static_cast<int>(i)); });
}

// The fixed values every parameter gets to see now and then.
nvValue fixed(std::uint8_t k) {
    switch (k % 24) {
        case 0: return nvValue();
        case 1: return icp::make::boolean(true);
        case 2: return icp::make::boolean(false);
        case 3: return integer(0);
        case 4: return integer(-1);
        case 5: return integer(255);
        case 6: return integer(4294967295LL);
        case 7: return integer(std::numeric_limits<long long>::max());
        case 8: return integer(std::numeric_limits<long long>::min());
        case 9: return real(0.5);
        case 10: return real(5.0);
        case 11: return real(std::nan(""));
        case 12: return real(std::numeric_limits<double>::infinity());
        case 13: return real(-1e300);
        case 14: return icp::make::text("");
        case 15: return icp::make::text("COM1,115200,N,8,1");
        case 16: return icp::make::text("$01M");
        case 17: return icp::make::text(std::string(300, 'x'));
        case 18: return numbers(0, 0);
        case 19: return numbers(8, 1);
        case 20: return numbers(1000, 0);
        case 21: return icp::make::matrix2(3, [](unsigned r, unsigned c) { return integer(r * 2 + c); });
        case 22: return icp::make::table2(1, [](unsigned, unsigned) { return integer(1); }, "a", "b");
        default: return nvValue(vt::nvInteger(static_cast<vt::nvValue*>(nullptr)));
    }
}

nvValue argument(Reader& in, const std::vector<nvValue>& pool, int depth = 0) {
    const std::uint8_t form = in.byte();
    switch (form % 8) {
        case 0:
        case 1: return fixed(in.byte());
        case 2: return pool.empty() ? nvValue() : pool[in.byte() % pool.size()];
        case 3: return integer(in.raw<std::int32_t>());
        case 4: return integer(in.raw<std::int64_t>());
        case 5: return real(in.raw<double>());
        case 6: return icp::make::text(in.text(in.byte() % 40));
        default: {
            const unsigned n = in.byte() % 20;
            vt::nvVector v(n, false, true, false);
            for (unsigned i = 0; i < n; ++i)
                v.setValue(depth < 2 ? argument(in, pool, depth + 1) : integer(in.byte()), i);
            return nvValue(v);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<const icp::Function*> functions = icp::catalogue();
    usbsim::use_default_rig();
    pacsim::use_default_rig();
    icp::usb_last_error = 0;
    icp::recording_enabled = false;
    icp::recorded_commands.clear();

    // Handles to every module of the default rig and to its serial port.
    std::vector<nvValue> pool;
    const struct {
        const char* id;
        int board;
    } modules[] = {{"USB2019", 1}, {"USB2026", 1}, {"USB2045_32", 1}, {"USB2051", 2}, {"USB2055", 3}, {"USB2084", 1}};
    for (const auto& m : modules) pool.push_back(icpusb_opendevice(icp::make::text(m.id), integer(m.board)));
    pool.push_back(icpcom_opendevice(icp::make::text("COM1,115200,N,8,1")));

    Reader in(data, size);
    for (std::size_t call = 0; call < max_calls && !in.empty(); ++call) {
        const icp::Function& f = *functions[in.byte() % functions.size()];
        std::vector<nvValue> args;
        for (std::size_t i = 0; i < f.arity(); ++i) args.push_back(argument(in, pool));
        nvValue result = f.invoke(args);
        if (!result.isNull()) {
            if (pool.size() >= max_pool) pool.erase(pool.begin() + 7);
            pool.push_back(result);
        }
    }
    return 0;
}
