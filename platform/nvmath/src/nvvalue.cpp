#include "NvMathLib.h"

#include <cmath>
#include <cstdarg>
#include <limits>
#include <stdexcept>
#include <utility>

#include "icp_platform/format.h"

namespace NuvarelMath {
namespace ValueTypes {

struct nvValue::Data {
    Kind kind = Kind::Null;
    bool boolean = false;
    std::int64_t integer = 0;
    double real = 0.0;
    std::string text;
    std::vector<CharFormat> formats;
    std::vector<nvValue> elements;  // row by row for a matrix
    unsigned rows = 0;
    unsigned columns = 0;
    std::vector<nvValue> column_names;
    bool made_from_pointer = false;
    nvValue* address = nullptr;
    bool flags[3] = {false, false, false};
};

namespace {

using Data = nvValue::Data;

Data* make(nvValue::Kind kind) {
    auto* d = new Data;
    d->kind = kind;
    return d;
}

// The low 32 bits of a double truncated toward zero, taken modulo 2^64 so
// that every double has an answer; NaN and infinities give 0. The magnitude
// is reduced first and the sign applied in unsigned arithmetic: adding 2^64
// to a small negative double would round it to 2^64 and lose the low bits.
std::uint32_t low_bits_of_real(double x) {
    if (!std::isfinite(x)) return 0;
    constexpr double two64 = 18446744073709551616.0;
    const double magnitude = std::fmod(std::fabs(std::trunc(x)), two64);  // exact, below 2^64
    const auto bits = static_cast<std::uint64_t>(magnitude);
    return static_cast<std::uint32_t>(x < 0 ? std::uint64_t{0} - bits : bits);
}

bool is_container(const Data* d) {
    return d && (d->kind == nvValue::Kind::Vector || d->kind == nvValue::Kind::Matrix);
}

std::string quoted(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        switch (c) {
            case '\n': out += "\\n"; break;
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            default: out += c;
        }
    }
    out += '"';
    return out;
}

std::string join(const std::vector<nvValue>& values, std::size_t from, std::size_t count) {
    std::string out = "[";
    for (std::size_t i = 0; i < count; ++i) {
        if (i) out += ", ";
        out += values[from + i].repr();
    }
    return out + "]";
}

}  // namespace

nvValue::nvValue() : d_(nullptr) {}
nvValue::nvValue(Data* data) : d_(data) {}
nvValue::nvValue(const nvValue& other) : d_(other.d_ ? new Data(*other.d_) : nullptr) {}
nvValue::nvValue(nvValue&& other) noexcept : d_(std::exchange(other.d_, nullptr)) {}

nvValue& nvValue::operator=(const nvValue& other) {
    if (this != &other) {
        Data* copy = other.d_ ? new Data(*other.d_) : nullptr;
        delete d_;
        d_ = copy;
    }
    return *this;
}

nvValue& nvValue::operator=(nvValue&& other) noexcept {
    if (this != &other) {
        delete d_;
        d_ = std::exchange(other.d_, nullptr);
    }
    return *this;
}

nvValue::~nvValue() { delete d_; }

nvValue::Kind nvValue::kind() const { return d_ ? d_->kind : Kind::Null; }

nvValue* nvValue::pointer() const { return d_ && d_->made_from_pointer ? d_->address : nullptr; }

bool nvValue::isNull() const { return kind() == Kind::Null; }
bool nvValue::isBoolean() const { return kind() == Kind::Boolean; }
bool nvValue::isInteger() const { return kind() == Kind::Integer; }
bool nvValue::isDouble() const { return kind() == Kind::Double; }
bool nvValue::isString() const { return kind() == Kind::String; }
bool nvValue::isVector() const { return kind() == Kind::Vector; }
bool nvValue::isMatrix() const { return kind() == Kind::Matrix; }

bool nvValue::isUnsignedInteger() const {
    if (isInteger()) return d_->integer >= 0 && d_->integer <= 0xFFFFFFFFLL;
    if (isDouble()) {
        double x = d_->real;
        return std::isfinite(x) && x == std::trunc(x) && x >= 0.0 && x <= 4294967295.0;
    }
    return false;
}

bool nvValue::isNumericVectorOrMatrix() const {
    if (!is_container(d_)) return false;
    for (const auto& e : d_->elements)
        if (!e.isInteger() && !e.isDouble()) return false;
    return true;
}

std::int64_t nvValue::toInt64() const {
    switch (kind()) {
        case Kind::Boolean: return d_->boolean ? 1 : 0;
        case Kind::Integer: return d_->integer;
        case Kind::Double: return static_cast<std::int32_t>(low_bits_of_real(d_->real));
        case Kind::Vector:
        case Kind::Matrix: return d_->elements.empty() ? 0 : d_->elements.front().toInt64();
        default: return 0;
    }
}

int nvValue::toInt() const { return static_cast<int>(static_cast<std::uint32_t>(toInt64())); }

unsigned nvValue::toUnsignedInt() const { return static_cast<unsigned>(static_cast<std::uint32_t>(toInt64())); }

double nvValue::toDouble() const {
    switch (kind()) {
        case Kind::Boolean: return d_->boolean ? 1.0 : 0.0;
        case Kind::Integer: return static_cast<double>(d_->integer);
        case Kind::Double: return d_->real;
        case Kind::Vector:
        case Kind::Matrix: return d_->elements.empty() ? 0.0 : d_->elements.front().toDouble();
        default: return 0.0;
    }
}

bool nvValue::toBool() const {
    switch (kind()) {
        case Kind::Boolean: return d_->boolean;
        case Kind::Integer: return d_->integer != 0;
        case Kind::Double: return d_->real != 0.0;
        case Kind::Vector:
        case Kind::Matrix: return !d_->elements.empty() && d_->elements.front().toBool();
        default: return false;
    }
}

std::string nvValue::toString() const { return isString() ? d_->text : repr(); }

nvValue nvValue::value(unsigned i) const {
    if (!is_container(d_) || i >= d_->elements.size()) return nvValue();
    return d_->elements[i];
}

unsigned nvValue::size() const {
    return is_container(d_) ? static_cast<unsigned>(d_->elements.size()) : 0u;
}

void nvValue::setValue(const nvValue& element, unsigned i) {
    if (!is_container(d_) || i >= d_->elements.size())
        throw std::out_of_range("setValue: element index out of range");
    d_->elements[i] = element;
}

void nvValue::setValue(const nvValue& element, unsigned row, unsigned column) {
    if (!isMatrix() || row >= d_->rows || column >= d_->columns)
        throw std::out_of_range("setValue: cell out of range");
    d_->elements[std::size_t(row) * d_->columns + column] = element;
}

void nvValue::setColumnNames(const std::vector<nvValue>& names) {
    if (!isMatrix() || names.size() != d_->columns)
        throw std::invalid_argument("setColumnNames: one name per column expected");
    d_->column_names = names;
}

unsigned nvValue::rows() const {
    if (isMatrix()) return d_->rows;
    return isVector() ? static_cast<unsigned>(d_->elements.size()) : 0u;
}

unsigned nvValue::columns() const {
    if (isMatrix()) return d_->columns;
    return isVector() ? 1u : 0u;
}

std::vector<nvValue> nvValue::columnNames() const { return isMatrix() ? d_->column_names : std::vector<nvValue>{}; }

bool nvValue::flag(unsigned index) const { return d_ && index < 3 && d_->flags[index]; }

std::string nvValue::repr() const {
    switch (kind()) {
        case Kind::Null: return "null";
        case Kind::Boolean: return d_->boolean ? "true" : "false";
        case Kind::Integer:
            return d_->made_from_pointer ? "<handle>" : std::to_string(d_->integer);
        case Kind::Double: return icp_platform::shortest_real(d_->real);
        case Kind::String: return quoted(d_->text);
        case Kind::Vector: return join(d_->elements, 0, d_->elements.size());
        case Kind::Matrix: {
            std::string out;
            if (!d_->column_names.empty()) {
                out = "{";
                for (std::size_t c = 0; c < d_->column_names.size(); ++c) {
                    if (c) out += ", ";
                    out += d_->column_names[c].repr();
                }
                out += "} ";
            }
            out += "[";
            for (unsigned r = 0; r < d_->rows; ++r) {
                if (r) out += ", ";
                out += join(d_->elements, std::size_t(r) * d_->columns, d_->columns);
            }
            return out + "]";
        }
    }
    return "null";
}

// --- the kinds ---

nvBoolean::nvBoolean(bool b) : nvValue(make(Kind::Boolean)) { d_->boolean = b; }

nvBoolean::nvBoolean(const nvValue& v) : nvValue() {
    if (v.isVector() || v.isMatrix()) {
        nvBoolean first(v.value(0));
        d_ = std::exchange(first.d_, nullptr);
    } else if (!v.isNull()) {
        d_ = make(Kind::Boolean);
        d_->boolean = v.toBool();
    }
}

nvInteger::nvInteger(int i) : nvValue(make(Kind::Integer)) { d_->integer = i; }
nvInteger::nvInteger(long long i) : nvValue(make(Kind::Integer)) { d_->integer = i; }

nvInteger::nvInteger(const nvValue& v) : nvValue() {
    if (v.isVector() || v.isMatrix()) {
        nvInteger first(v.value(0));
        d_ = std::exchange(first.d_, nullptr);
    } else if (!v.isNull()) {
        d_ = make(Kind::Integer);
        d_->integer = v.isInteger() ? v.toInt64() : static_cast<std::int64_t>(v.toInt());
    }
}

nvInteger::nvInteger(nvValue* address) : nvValue(make(Kind::Integer)) {
    d_->made_from_pointer = true;
    d_->address = address;
}

nvDouble::nvDouble(double x) : nvValue(make(Kind::Double)) { d_->real = x; }

nvDouble::nvDouble(const nvValue& v) : nvValue() {
    if (v.isVector() || v.isMatrix()) {
        nvDouble first(v.value(0));
        d_ = std::exchange(first.d_, nullptr);
    } else if (!v.isNull()) {
        d_ = make(Kind::Double);
        d_->real = v.toDouble();
    }
}

nvSymbolicValue::nvSymbolicValue(const std::string& text, bool flag, const std::vector<CharFormat>& formats)
    : nvValue(make(Kind::String)) {
    d_->text = text;
    d_->formats = formats;
    d_->flags[0] = flag;
}

nvVector::nvVector(unsigned n, bool flag0, bool flag1, bool flag2) : nvValue(make(Kind::Vector)) {
    d_->elements.resize(n);
    d_->flags[0] = flag0;
    d_->flags[1] = flag1;
    d_->flags[2] = flag2;
}

nvMatrix::nvMatrix(unsigned rows, unsigned columns, bool flag0, bool flag1, bool flag2)
    : nvValue(make(Kind::Matrix)) {
    d_->rows = rows;
    d_->columns = columns;
    d_->elements.resize(std::size_t(rows) * columns);
    d_->flags[0] = flag0;
    d_->flags[1] = flag1;
    d_->flags[2] = flag2;
}

// Out of line, so that the kinds' tables live in this library only.
nvBoolean::~nvBoolean() = default;
nvInteger::~nvInteger() = default;
nvDouble::~nvDouble() = default;
nvSymbolicValue::~nvSymbolicValue() = default;
nvVector::~nvVector() = default;
nvMatrix::~nvMatrix() = default;

}  // namespace ValueTypes

nvMath::nvMath(unsigned precision, AngleUnit unit) : precision_(precision), unit_(unit) {}
nvMath::~nvMath() = default;

ValueTypes::nvValue nvMath::vector_f(unsigned n, ...) {
    ValueTypes::nvVector result(n, false, true, false);
    va_list items;
    va_start(items, n);
    for (unsigned i = 0; i < n; ++i) {
        auto* item = va_arg(items, ValueTypes::nvValue*);
        if (!item) continue;
        result.setValue(*item, i);
        delete item;
    }
    va_end(items);
    return result;
}

}  // namespace NuvarelMath
