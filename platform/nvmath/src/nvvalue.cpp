#include "NvMathLib.h"

#include <atomic>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "icp_platform/format.h"

namespace NuvarelMath {
namespace ValueTypes {

// A block starts with its reference count; the kind of the values that
// share it says which block it is.
struct nvValue::Shared {
    std::atomic<unsigned> references{1};
    bool flags[3] = {false, false, false};
};

namespace {

using Kind = nvValue::Kind;
using Shared = nvValue::Shared;

// A String's block: the characters follow it in the same allocation.
struct Text : Shared {
    std::vector<CharFormat> formats;
    std::size_t length = 0;

    char* chars() { return reinterpret_cast<char*>(this + 1); }
    std::string_view view() { return {chars(), length}; }
};

// A Vector's or Matrix's block: the elements follow it in the same
// allocation, row by row for a matrix.
struct Elements : Shared {
    unsigned rows = 0;
    unsigned columns = 0;
    std::size_t count = 0;
    std::vector<nvValue> column_names;

    nvValue* begin() { return reinterpret_cast<nvValue*>(this + 1); }
    nvValue* end() { return begin() + count; }
    nvValue& operator[](std::size_t i) { return begin()[i]; }
};
static_assert(sizeof(Elements) % alignof(nvValue) == 0);

Text* new_text(std::string_view text, const std::vector<CharFormat>& formats, bool flag) {
    void* memory = ::operator new(sizeof(Text) + text.size());
    Text* t = nullptr;
    try {
        t = new (memory) Text;
        t->formats = formats;
    } catch (...) {
        if (t) t->~Text();
        ::operator delete(memory);
        throw;
    }
    t->length = text.size();
    if (!text.empty()) std::memcpy(t->chars(), text.data(), text.size());
    t->flags[0] = flag;
    return t;
}

void delete_text(Text* t) noexcept {
    t->~Text();
    ::operator delete(t);
}

void* allocate_elements(std::size_t count) {
    if (count > (std::numeric_limits<std::size_t>::max() - sizeof(Elements)) / sizeof(nvValue))
        throw std::length_error("nvValue: too many elements");
    return ::operator new(sizeof(Elements) + count * sizeof(nvValue));
}

Elements* new_elements(std::size_t count) {
    auto* e = new (allocate_elements(count)) Elements;
    for (std::size_t i = 0; i < count; ++i) new (e->begin() + i) nvValue();
    e->count = count;
    return e;
}

void delete_elements(Elements* e) noexcept {
    for (nvValue& v : *e) v.~nvValue();
    e->~Elements();
    ::operator delete(e);
}

// The elements are copied as values: nested blocks are shared, not copied.
Elements* copy_elements(Elements& from) {
    void* memory = allocate_elements(from.count);
    auto* e = new (memory) Elements;
    try {
        e->column_names = from.column_names;
    } catch (...) {
        e->~Elements();
        ::operator delete(memory);
        throw;
    }
    for (std::size_t i = 0; i < from.count; ++i) new (e->begin() + i) nvValue(from[i]);
    e->count = from.count;
    e->rows = from.rows;
    e->columns = from.columns;
    for (int f = 0; f < 3; ++f) e->flags[f] = from.flags[f];
    return e;
}

// The container kinds come last.
static_assert(Kind::String < Kind::Vector && Kind::Vector < Kind::Matrix);
bool is_container(Kind kind) { return kind >= Kind::Vector; }

// The last reference needs no atomic update: no other value can take one
// from a block that only the caller's value holds.
void drop(Kind kind, Shared* block) noexcept {
    if (block->references.load(std::memory_order_acquire) != 1 &&
        block->references.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (kind == Kind::String) {
        delete_text(static_cast<Text*>(block));
    } else {
        delete_elements(static_cast<Elements*>(block));
    }
}

// The low 32 bits of a double truncated toward zero, taken modulo 2^64 so
// that every double has an answer; NaN and infinities give 0. The magnitude
// is reduced first and the sign applied in unsigned arithmetic: adding 2^64
// to a small negative double would round it to 2^64 and lose the low bits.
std::uint32_t low_bits_of_real(double x) {
    // Within the 64-bit range the conversion itself truncates exactly.
    if (x > -9223372036854775808.0 && x < 9223372036854775808.0)
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(x)));
    if (!std::isfinite(x)) return 0;
    constexpr double two64 = 18446744073709551616.0;
    const double magnitude = std::fmod(std::fabs(std::trunc(x)), two64);  // exact, below 2^64
    const auto bits = static_cast<std::uint64_t>(magnitude);
    return static_cast<std::uint32_t>(x < 0 ? std::uint64_t{0} - bits : bits);
}

std::string quoted(std::string_view s) {
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

std::string join(const nvValue* values, std::size_t count) {
    std::string out = "[";
    for (std::size_t i = 0; i < count; ++i) {
        if (i) out += ", ";
        out += values[i].repr();
    }
    return out + "]";
}

}  // namespace

nvValue::nvValue() = default;

nvValue::nvValue(const nvValue& other) { take(other); }

nvValue::nvValue(nvValue&& other) noexcept { steal(other); }

nvValue& nvValue::operator=(const nvValue& other) {
    if (this != &other) {
        const Kind old_kind = kind_;
        Shared* old_block = block_ ? u_.shared : nullptr;
        take(other);
        if (old_block) drop(old_kind, old_block);
    }
    return *this;
}

nvValue& nvValue::operator=(nvValue&& other) noexcept {
    if (this != &other) {
        release();
        steal(other);
    }
    return *this;
}

nvValue::~nvValue() {
    if (block_) drop(kind_, u_.shared);
}

// Takes the other value's contents, sharing its block if it has one; what
// this value held is left to the caller.
void nvValue::take(const nvValue& other) noexcept {
    kind_ = other.kind_;
    handle_ = other.handle_;
    block_ = other.block_;
    short_flag_ = other.short_flag_;
    length_ = other.length_;
    u_ = other.u_;
    if (block_) u_.shared->references.fetch_add(1, std::memory_order_relaxed);
}

// The same, leaving the other value null.
void nvValue::steal(nvValue& other) noexcept {
    kind_ = other.kind_;
    handle_ = other.handle_;
    block_ = other.block_;
    short_flag_ = other.short_flag_;
    length_ = other.length_;
    u_ = other.u_;
    other.kind_ = Kind::Null;
    other.handle_ = false;
    other.block_ = false;
}

void nvValue::release() noexcept {
    if (block_) drop(kind_, u_.shared);
    kind_ = Kind::Null;
    handle_ = false;
    block_ = false;
}

// A container's block, this value's own: a shared one is copied first, so
// that no other value sees the change. (Strings never change.)
nvValue::Shared& nvValue::own() {
    if (u_.shared->references.load(std::memory_order_acquire) == 1) [[likely]]
        return *u_.shared;
    Shared* copy = copy_elements(*static_cast<Elements*>(u_.shared));
    drop(kind_, u_.shared);
    u_.shared = copy;
    return *copy;
}

std::string_view nvValue::chars() const {
    if (kind_ != Kind::String) return {};
    return block_ ? static_cast<Text*>(u_.shared)->view() : std::string_view(u_.text, length_);
}

namespace {

Elements& elements_of(Shared* block) { return *static_cast<Elements*>(block); }

}  // namespace

nvValue::Kind nvValue::kind() const { return kind_; }

nvValue* nvValue::pointer() const { return handle_ ? u_.address : nullptr; }

bool nvValue::isNull() const { return kind_ == Kind::Null; }
bool nvValue::isBoolean() const { return kind_ == Kind::Boolean; }
bool nvValue::isInteger() const { return kind_ == Kind::Integer; }
bool nvValue::isDouble() const { return kind_ == Kind::Double; }
bool nvValue::isString() const { return kind_ == Kind::String; }
bool nvValue::isVector() const { return kind_ == Kind::Vector; }
bool nvValue::isMatrix() const { return kind_ == Kind::Matrix; }

bool nvValue::isUnsignedInteger() const {
    if (kind_ == Kind::Integer) return handle_ || (u_.integer >= 0 && u_.integer <= 0xFFFFFFFFLL);
    if (kind_ == Kind::Double) {
        const double x = u_.real;
        return std::isfinite(x) && x == std::trunc(x) && x >= 0.0 && x <= 4294967295.0;
    }
    return false;
}

bool nvValue::isNumericVectorOrMatrix() const {
    if (!is_container(kind_)) return false;
    for (const nvValue& e : elements_of(u_.shared))
        if (e.kind_ != Kind::Integer && e.kind_ != Kind::Double) return false;
    return true;
}

std::int64_t nvValue::toInt64() const {
    switch (kind_) {
        case Kind::Boolean: return u_.boolean ? 1 : 0;
        case Kind::Integer: return handle_ ? 0 : u_.integer;
        case Kind::Double: return static_cast<std::int32_t>(low_bits_of_real(u_.real));
        case Kind::Vector:
        case Kind::Matrix: return elements_of(u_.shared).count == 0 ? 0 : elements_of(u_.shared)[0].toInt64();
        default: return 0;
    }
}

int nvValue::toInt() const { return static_cast<int>(static_cast<std::uint32_t>(toInt64())); }

unsigned nvValue::toUnsignedInt() const { return static_cast<unsigned>(static_cast<std::uint32_t>(toInt64())); }

double nvValue::toDouble() const {
    switch (kind_) {
        case Kind::Boolean: return u_.boolean ? 1.0 : 0.0;
        case Kind::Integer: return handle_ ? 0.0 : static_cast<double>(u_.integer);
        case Kind::Double: return u_.real;
        case Kind::Vector:
        case Kind::Matrix: return elements_of(u_.shared).count == 0 ? 0.0 : elements_of(u_.shared)[0].toDouble();
        default: return 0.0;
    }
}

bool nvValue::toBool() const {
    switch (kind_) {
        case Kind::Boolean: return u_.boolean;
        case Kind::Integer: return !handle_ && u_.integer != 0;
        case Kind::Double: return u_.real != 0.0;
        case Kind::Vector:
        case Kind::Matrix: return elements_of(u_.shared).count != 0 && elements_of(u_.shared)[0].toBool();
        default: return false;
    }
}

std::string nvValue::toString() const { return isString() ? std::string(chars()) : repr(); }

nvValue nvValue::value(unsigned i) const {
    if (!is_container(kind_) || i >= elements_of(u_.shared).count) return nvValue();
    return elements_of(u_.shared)[i];
}

unsigned nvValue::size() const { return is_container(kind_) ? static_cast<unsigned>(elements_of(u_.shared).count) : 0u; }

// The element is taken before this value's block is made its own: it may be
// this very value, whose old contents it then keeps.
void nvValue::setValue(const nvValue& element, unsigned i) {
    if (!is_container(kind_) || i >= elements_of(u_.shared).count)
        throw std::out_of_range("setValue: element index out of range");
    nvValue copy(element);
    static_cast<Elements&>(own())[i] = std::move(copy);
}

void nvValue::setValue(const nvValue& element, unsigned row, unsigned column) {
    if (!isMatrix() || row >= elements_of(u_.shared).rows || column >= elements_of(u_.shared).columns)
        throw std::out_of_range("setValue: cell out of range");
    nvValue copy(element);
    auto& e = static_cast<Elements&>(own());
    e[std::size_t(row) * e.columns + column] = std::move(copy);
}

void nvValue::setValue(nvValue&& element, unsigned i) {
    if (&element == this) return setValue(static_cast<const nvValue&>(element), i);
    if (!is_container(kind_) || i >= elements_of(u_.shared).count)
        throw std::out_of_range("setValue: element index out of range");
    static_cast<Elements&>(own())[i] = std::move(element);
}

void nvValue::setValue(nvValue&& element, unsigned row, unsigned column) {
    if (&element == this) return setValue(static_cast<const nvValue&>(element), row, column);
    if (!isMatrix() || row >= elements_of(u_.shared).rows || column >= elements_of(u_.shared).columns)
        throw std::out_of_range("setValue: cell out of range");
    auto& e = static_cast<Elements&>(own());
    e[std::size_t(row) * e.columns + column] = std::move(element);
}

void nvValue::setColumnNames(const std::vector<nvValue>& names) {
    if (!isMatrix() || names.size() != elements_of(u_.shared).columns)
        throw std::invalid_argument("setColumnNames: one name per column expected");
    std::vector<nvValue> copy(names);
    static_cast<Elements&>(own()).column_names = std::move(copy);
}

unsigned nvValue::rows() const {
    if (isMatrix()) return elements_of(u_.shared).rows;
    return isVector() ? static_cast<unsigned>(elements_of(u_.shared).count) : 0u;
}

unsigned nvValue::columns() const {
    if (isMatrix()) return elements_of(u_.shared).columns;
    return isVector() ? 1u : 0u;
}

std::vector<nvValue> nvValue::columnNames() const {
    return isMatrix() ? elements_of(u_.shared).column_names : std::vector<nvValue>{};
}

bool nvValue::flag(unsigned index) const {
    if (kind_ == Kind::String && !block_) return index == 0 && short_flag_;
    return block_ && index < 3 && u_.shared->flags[index];
}

std::string nvValue::repr() const {
    switch (kind_) {
        case Kind::Null: return "null";
        case Kind::Boolean: return u_.boolean ? "true" : "false";
        case Kind::Integer: return handle_ ? "<handle>" : std::to_string(u_.integer);
        case Kind::Double: return icp_platform::shortest_real(u_.real);
        case Kind::String: return quoted(chars());
        case Kind::Vector: return join(elements_of(u_.shared).begin(), elements_of(u_.shared).count);
        case Kind::Matrix: {
            Elements& e = elements_of(u_.shared);
            std::string out;
            if (!e.column_names.empty()) {
                out = "{";
                for (std::size_t c = 0; c < e.column_names.size(); ++c) {
                    if (c) out += ", ";
                    out += e.column_names[c].repr();
                }
                out += "} ";
            }
            out += "[";
            for (unsigned r = 0; r < e.rows; ++r) {
                if (r) out += ", ";
                out += join(e.begin() + std::size_t(r) * e.columns, e.columns);
            }
            return out + "]";
        }
    }
    return "null";
}

// --- the kinds ---

nvBoolean::nvBoolean(bool b) {
    kind_ = Kind::Boolean;
    u_.boolean = b;
}

nvBoolean::nvBoolean(const nvValue& v) {
    if (v.isVector() || v.isMatrix()) {
        nvValue::operator=(nvBoolean(v.value(0)));
    } else if (!v.isNull()) {
        kind_ = Kind::Boolean;
        u_.boolean = v.toBool();
    }
}

nvInteger::nvInteger(int i) {
    kind_ = Kind::Integer;
    u_.integer = i;
}

nvInteger::nvInteger(long long i) {
    kind_ = Kind::Integer;
    u_.integer = i;
}

nvInteger::nvInteger(const nvValue& v) {
    if (v.isVector() || v.isMatrix()) {
        nvValue::operator=(nvInteger(v.value(0)));
    } else if (!v.isNull()) {
        const std::int64_t i = v.isInteger() ? v.toInt64() : static_cast<std::int64_t>(v.toInt());
        kind_ = Kind::Integer;
        u_.integer = i;
    }
}

nvInteger::nvInteger(nvValue* address) {
    kind_ = Kind::Integer;
    handle_ = true;
    u_.address = address;
}

nvDouble::nvDouble(double x) {
    kind_ = Kind::Double;
    u_.real = x;
}

nvDouble::nvDouble(const nvValue& v) {
    if (v.isVector() || v.isMatrix()) {
        nvValue::operator=(nvDouble(v.value(0)));
    } else if (!v.isNull()) {
        kind_ = Kind::Double;
        u_.real = v.toDouble();
    }
}

nvSymbolicValue::nvSymbolicValue(const std::string& text, bool flag, const std::vector<CharFormat>& formats) {
    if (formats.empty() && text.size() <= sizeof u_.text) {
        if (!text.empty()) std::memcpy(u_.text, text.data(), text.size());
        length_ = static_cast<unsigned char>(text.size());
        short_flag_ = flag;
    } else {
        u_.shared = new_text(text, formats, flag);
        block_ = true;
    }
    kind_ = Kind::String;
}

nvVector::nvVector(unsigned n, bool flag0, bool flag1, bool flag2) {
    Elements* e = new_elements(n);
    e->flags[0] = flag0;
    e->flags[1] = flag1;
    e->flags[2] = flag2;
    u_.shared = e;
    block_ = true;
    kind_ = Kind::Vector;
}

nvMatrix::nvMatrix(unsigned rows, unsigned columns, bool flag0, bool flag1, bool flag2) {
    Elements* e = new_elements(std::size_t(rows) * columns);
    e->rows = rows;
    e->columns = columns;
    e->flags[0] = flag0;
    e->flags[1] = flag1;
    e->flags[2] = flag2;
    u_.shared = e;
    block_ = true;
    kind_ = Kind::Matrix;
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
        result.setValue(std::move(*item), i);
        delete item;
    }
    va_end(items);
    return result;
}

}  // namespace NuvarelMath
