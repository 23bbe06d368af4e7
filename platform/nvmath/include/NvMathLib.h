// The host application's value library, as plug-ins see it.
//
// Copies are deep as far as any caller can tell; every operation is defined
// for every kind, so no input can crash a caller. Besides the operations a plug-in uses, the
// library lets a host look inside a value (kind, 64-bit integer, rows,
// columns, column names, the printed form).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#if defined(_WIN32)
#  if defined(NVMATHLIB_BUILD)
#    define NVMATH_API __declspec(dllexport)
#  else
#    define NVMATH_API __declspec(dllimport)
#  endif
#else
#  define NVMATH_API __attribute__((visibility("default")))
#endif

namespace NuvarelMath {

enum class AngleUnit : int { Radian = 0, Degree = 1, Gradian = 2 };

namespace ValueTypes {

// A run of character formatting inside a symbolic value. Plug-ins pass an
// empty list; the library only stores it.
struct CharFormat {
    unsigned start = 0;
    unsigned length = 0;
    unsigned flags = 0;
};

class NVMATH_API nvValue {
public:
    enum class Kind { Null, Boolean, Integer, Double, String, Vector, Matrix };

    nvValue();
    nvValue(const nvValue& other);
    nvValue(nvValue&& other) noexcept;
    nvValue& operator=(const nvValue& other);
    nvValue& operator=(nvValue&& other) noexcept;
    virtual ~nvValue();

    // The address carried by a value made with nvInteger(nvValue*); null for
    // every other value.
    nvValue* pointer() const;

    bool isNull() const;
    bool isBoolean() const;
    bool isInteger() const;
    // An Integer in 0 .. 4294967295, or a Double holding a whole number in
    // that range.
    bool isUnsignedInteger() const;
    bool isDouble() const;
    bool isString() const;
    bool isVector() const;
    bool isMatrix() const;
    // A Vector or Matrix whose every element is an Integer or a Double.
    bool isNumericVectorOrMatrix() const;

    int toInt() const;
    unsigned toUnsignedInt() const;
    double toDouble() const;
    bool toBool() const;
    // A String's own text; any other kind in its printed form.
    std::string toString() const;

    // Element i of a Vector (of a Matrix, row by row); the null value when
    // out of range or not a container.
    nvValue value(unsigned i) const;
    // Element count: a Vector's elements, a Matrix's rows x columns, else 0.
    virtual unsigned size() const;

    // Throw std::out_of_range when the index is outside the container.
    void setValue(const nvValue& element, unsigned i);
    void setValue(const nvValue& element, unsigned row, unsigned column);
    // The same for a value about to go away: its contents are taken over
    // instead of copied.
    void setValue(nvValue&& element, unsigned i);
    void setValue(nvValue&& element, unsigned row, unsigned column);
    // Throws std::invalid_argument unless there is one name per column.
    void setColumnNames(const std::vector<nvValue>& names);

    // --- inspection for hosts ---
    Kind kind() const;
    std::int64_t toInt64() const;
    unsigned rows() const;
    unsigned columns() const;
    std::vector<nvValue> columnNames() const;
    // The printed form: strings quoted with \n, \" and \\ escapes, reals in
    // the shortest form that reads back, vectors [a, b], matrices
    // [[a, b], [c, d]], tables with their column names first, handles as
    // <handle>.
    std::string repr() const;
    // The flags given to the constructors of the kinds; stored, no effect.
    bool flag(unsigned index) const;

    // The text of a String, the elements of a Vector or Matrix.
    struct Shared;

protected:
    // Scalars and short strings live in the value itself. A longer String,
    // a Vector or a Matrix keeps its contents in a block that copies share
    // until one of them is changed (setValue, setColumnNames), which then
    // takes a block of its own.
    Kind kind_ = Kind::Null;
    bool handle_ = false;       // made by nvInteger(nvValue*)
    bool block_ = false;        // u_.shared holds the contents
    bool short_flag_ = false;   // the flag of a String held in u_.text
    unsigned char length_ = 0;  // the length of a String held in u_.text
    union Payload {
        bool boolean;
        std::int64_t integer;
        double real;
        nvValue* address;
        Shared* shared;
        char text[16];
    } u_{.integer = 0};

private:
    void release() noexcept;
    void take(const nvValue& other) noexcept;
    void steal(nvValue& other) noexcept;
    Shared& own();
    std::string_view chars() const;
};

class NVMATH_API nvBoolean : public nvValue {
public:
    ~nvBoolean() override;
    explicit nvBoolean(bool b);
    // From a null value: the null value; from a container: its first element.
    explicit nvBoolean(const nvValue& v);
};

class NVMATH_API nvInteger : public nvValue {
public:
    ~nvInteger() override;
    explicit nvInteger(int i);
    explicit nvInteger(long long i);
    explicit nvInteger(const nvValue& v);
    // An Integer of value 0 that carries an opaque address.
    explicit nvInteger(nvValue* address);
};

class NVMATH_API nvDouble : public nvValue {
public:
    ~nvDouble() override;
    explicit nvDouble(double x);
    explicit nvDouble(const nvValue& v);
};

class NVMATH_API nvSymbolicValue : public nvValue {
public:
    ~nvSymbolicValue() override;
    nvSymbolicValue(const std::string& text, bool flag, const std::vector<CharFormat>& formats);
};

class NVMATH_API nvVector : public nvValue {
public:
    ~nvVector() override;
    nvVector(unsigned n, bool flag0, bool flag1, bool flag2);
};

class NVMATH_API nvMatrix : public nvValue {
public:
    ~nvMatrix() override;
    nvMatrix(unsigned rows, unsigned columns, bool flag0, bool flag1, bool flag2);
};

}  // namespace ValueTypes

class NVMATH_API nvMath {
public:
    nvMath(unsigned precision, AngleUnit unit);
    ~nvMath();
    nvMath(const nvMath&) = delete;
    nvMath& operator=(const nvMath&) = delete;

    // Takes n heap-allocated nvValue* items, returns a Vector of copies in
    // order and deletes the items.
    ValueTypes::nvValue vector_f(unsigned n, ...);

    unsigned precision() const { return precision_; }
    AngleUnit angleUnit() const { return unit_; }

private:
    unsigned precision_;
    AngleUnit unit_;
};

}  // namespace NuvarelMath
