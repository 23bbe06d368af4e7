#include "icphost/script.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <exception>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include <icp_platform/format.h>

#include "icphost/listing.h"
#include "icphost/text.h"

namespace icphost {

namespace {

using namespace NuvarelMath::ValueTypes;
using Variables = std::map<std::string, Interpreter::Variable, std::less<>>;

struct Fault : std::runtime_error {
    explicit Fault(const std::string& message, std::size_t at = std::string_view::npos,
                   std::vector<std::string> more = {})
        : std::runtime_error(message), column(at), detail(std::move(more)) {}
    std::size_t column;               // of a syntax error, from 0
    std::vector<std::string> detail;  // further lines
};

// The line around `column`, at most `window` bytes of it with "..." where it
// is cut, and under it a caret at the column's character.
std::string excerpt(std::string_view line, std::size_t column) {
    constexpr std::size_t window = 60;
    const auto continuation = [&](std::size_t i) {
        return i < line.size() && (static_cast<unsigned char>(line[i]) & 0xC0) == 0x80;
    };
    column = std::min(column, line.size());
    std::size_t first = 0, last = line.size();
    if (last > window) {
        first = column > window / 2 ? column - window / 2 : 0;
        last = std::min(line.size(), first + window);
        while (first > 0 && continuation(first)) --first;
        while (continuation(last)) ++last;
    }
    std::string text = first > 0 ? "..." : "";
    std::string caret(text.size(), ' ');
    for (std::size_t i = first; i < last; ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        text += c == '\t' ? ' ' : (c < 0x20 || c == 0x7F) ? '?' : char(c);
        if (i < column && !continuation(i)) caret += ' ';
    }
    if (last < line.size()) text += "...";
    return "    " + text + "\n    " + caret + "^\n";
}

struct Expr {
    enum class Kind { Literal, Variable, Call, Vector };
    Kind kind = Kind::Literal;
    nvValue value;                              // Literal
    std::string name;                           // Variable
    const ScriptFunction* function = nullptr;   // Call
    std::vector<Expr> items;                    // Call arguments, Vector elements
};

struct Statement {
    std::string target;  // empty: print the value
    Expr expr;
};

// Brackets and calls nest at most this deep in a line, and vectors in a
// value: the parser, the evaluator and the printer recurse once per level.
constexpr int max_nesting = 256;
const std::string nesting_limit = std::to_string(max_nesting);

[[noreturn]] void syntax(const std::string& message, std::size_t column) { throw Fault(message, column); }

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_hex(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool is_keyword(std::string_view s) { return s == "null" || s == "true" || s == "false"; }

std::string plural(std::size_t n, const char* word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

Expr literal(nvValue value) {
    Expr e;
    e.value = std::move(value);
    return e;
}

// Parses one line against the known functions and the variables defined so
// far; every name is resolved here, so evaluation cannot meet an unknown one.
class Parser {
public:
    Parser(std::string_view line, const std::vector<const ScriptFunction*>& functions,
           const Variables& variables)
        : s_(line), functions_(functions), variables_(variables) {}

    // Nothing for a blank or comment line.
    std::optional<Statement> statement() {
        if (next() == '\0') return std::nullopt;
        Statement st;
        const std::size_t start = p_;
        if (is_name_start(s_[p_])) {
            std::string id = name();
            if (next() == '=') {
                if (is_keyword(id)) syntax("cannot assign to " + quoted(id), start);
                ++p_;
                st.target = std::move(id);
            } else {
                p_ = start;
            }
        }
        st.expr = expression();
        if (next() != '\0') syntax("unexpected " + found() + " after the expression", p_);
        return st;
    }

private:
    // The next character outside blanks; '\0' at the end of the line or of
    // its code, where a comment starts.
    char next() {
        while (p_ < s_.size() && is_blank(s_[p_])) ++p_;
        return p_ < s_.size() && s_[p_] != '#' ? s_[p_] : '\0';
    }
    char at(std::size_t i) const { return i < s_.size() ? s_[i] : '\0'; }

    // The text at the current position, for messages.
    std::string found() {
        if (next() == '\0') return "end of line";
        std::string_view rest = s_.substr(p_);
        rest = rest.substr(0, rest.find('#'));
        while (!rest.empty() && is_blank(rest.back())) rest.remove_suffix(1);
        if (rest.size() > 24) return "'" + std::string(rest.substr(0, 21)) + "...'";
        return "'" + std::string(rest) + "'";
    }

    std::string name() {
        const std::size_t start = p_;
        while (is_name_char(at(p_))) ++p_;
        return std::string(s_.substr(start, p_ - start));
    }

    Expr expression() {
        const char c = next();
        if (c == '"') return literal(string());
        if (c == '[') return vector();
        if (c == '-' || is_digit(c) || (c == '.' && is_digit(at(p_ + 1)))) return literal(number());
        if (const ScriptFunction* f = known_call()) return call(*f);
        if (is_name_start(c)) return named();
        syntax("expected an expression, found " + found(), p_);
    }

    // A known script name, the longest that fits, followed by blanks and '('.
    const ScriptFunction* known_call() {
        const std::string_view rest = s_.substr(p_);
        for (const ScriptFunction* f : functions_) {
            if (!rest.starts_with(f->name)) continue;
            std::size_t q = p_ + f->name.size();
            while (is_blank(at(q))) ++q;
            if (at(q) == '(') {
                p_ = q;
                return f;
            }
        }
        return nullptr;
    }

    // A keyword, a variable, or a call of a name that is not known.
    Expr named() {
        const std::size_t start = p_;
        std::string id = name();
        // Words separated by blanks and followed by '(' name a function.
        std::size_t q = p_;
        std::size_t words_end = p_;
        for (;;) {
            while (is_blank(at(q))) ++q;
            if (at(q) == '(') {
                const std::string called(s_.substr(start, words_end - start));
                throw Fault("unknown function " + quoted(called) + suggestion(called));
            }
            if (!is_name_start(at(q))) break;
            while (is_name_char(at(q))) ++q;
            words_end = q;
        }
        if (id == "null") return literal(nvValue());
        if (id == "true") return literal(nvBoolean(true));
        if (id == "false") return literal(nvBoolean(false));
        if (!variables_.contains(id)) {
            for (const ScriptFunction* f : functions_) {
                if (f->name == id)
                    throw Fault("unknown variable '" + id + "' (a function: call it as " + id + "())");
            }
            std::vector<std::string> names;
            for (const auto& [name, variable] : variables_) names.push_back(name);
            throw Fault("unknown variable " + quoted(id) + did_you_mean(nearest_names(names, id)));
        }
        Expr e;
        e.kind = Expr::Kind::Variable;
        e.name = std::move(id);
        return e;
    }

    std::string suggestion(const std::string& called) const {
        std::vector<std::string> names;
        for (const ScriptFunction* f : functions_) names.push_back(f->name);
        return did_you_mean(nearest_names(names, called));
    }

    // Expressions separated by commas up to `close`; the opening bracket is
    // at the current position.
    std::vector<Expr> list(char close, const std::string& where) {
        if (++depth_ > max_nesting) syntax("brackets and calls nested deeper than " + nesting_limit, p_);
        ++p_;
        std::vector<Expr> items;
        if (next() == close) {
            ++p_;
            --depth_;
            return items;
        }
        for (;;) {
            items.push_back(expression());
            const char c = next();
            if (c != ',' && c != close)
                syntax(std::string("expected ',' or '") + close + "' in " + where + ", found " + found(), p_);
            ++p_;
            if (c == close) {
                --depth_;
                return items;
            }
        }
    }

    Expr call(const ScriptFunction& f) {
        Expr e;
        e.kind = Expr::Kind::Call;
        e.function = &f;
        e.items = list(')', "the arguments of '" + f.name + "'");
        if (e.items.size() != f.arity()) {
            std::vector<std::string> parameters;
            if (f.arity() > 0) parameters = parameter_lines(f);
            throw Fault("'" + f.name + "' takes " +
                            (f.arity() == 0 ? std::string("no arguments") : plural(f.arity(), "argument")) +
                            ", " + std::to_string(e.items.size()) + " given" + (f.arity() > 0 ? ":" : ""),
                        std::string_view::npos, std::move(parameters));
        }
        return e;
    }

    Expr vector() {
        Expr e;
        e.kind = Expr::Kind::Vector;
        e.items = list(']', "a vector");
        return e;
    }

    nvValue string() {
        std::string text;
        const std::size_t start = p_++;
        for (;;) {
            if (p_ >= s_.size()) syntax("unterminated string", start);
            const char c = s_[p_++];
            if (c == '"') break;
            if (c != '\\') {
                text += c;
                continue;
            }
            if (p_ >= s_.size()) syntax("unterminated string", start);
            const char e = s_[p_++];
            switch (e) {
                case 'n': text += '\n'; break;
                case '"': text += '"'; break;
                case '\\': text += '\\'; break;
                default:
                    syntax(std::string("unknown escape '\\") + e + "' in a string (\\n, \\\" and \\\\ are known)",
                           p_ - 2);
            }
        }
        return nvSymbolicValue(text, true, {});
    }

    nvValue number() {
        const std::size_t start = p_;
        const bool negative = at(p_) == '-';
        if (negative) ++p_;
        if (!is_digit(at(p_)) && !(at(p_) == '.' && is_digit(at(p_ + 1))))
            syntax("expected a number after '-'", start);
        const bool hex = at(p_) == '0' && (at(p_ + 1) == 'x' || at(p_ + 1) == 'X');
        bool real = false;
        std::size_t digits = 0;
        if (hex) {
            p_ += 2;
            for (; is_hex(at(p_)); ++p_) ++digits;
        } else {
            for (; is_digit(at(p_)); ++p_) ++digits;
            if (at(p_) == '.') {
                real = true;
                for (++p_; is_digit(at(p_)); ++p_) ++digits;
            }
            if (digits > 0 && (at(p_) == 'e' || at(p_) == 'E')) {
                real = true;
                std::size_t q = p_ + 1;
                if (at(q) == '+' || at(q) == '-') ++q;
                if (is_digit(at(q))) {
                    for (p_ = q; is_digit(at(p_)); ++p_) {}
                } else {
                    digits = 0;  // an exponent without digits
                }
            }
        }
        if (digits == 0 || is_name_char(at(p_)) || at(p_) == '.') {
            while (is_name_char(at(p_)) || at(p_) == '.') ++p_;
            syntax("malformed number " + quoted(s_.substr(start, p_ - start)), start);
        }
        const char* first = s_.data() + start;
        const char* last = s_.data() + p_;
        const std::string text = icp_platform::clip(std::string_view(first, last));
        if (real) {
            double x = 0;
            const auto r = std::from_chars(first, last, x);
            if (r.ec != std::errc() || r.ptr != last) syntax("real out of range: " + text, start);
            return nvDouble(x);
        }
        std::uint64_t magnitude = 0;
        const char* digits_first = first + (negative ? 1 : 0) + (hex ? 2 : 0);
        const auto r = std::from_chars(digits_first, last, magnitude, hex ? 16 : 10);
        constexpr auto max = std::uint64_t(std::numeric_limits<std::int64_t>::max());
        if (r.ec != std::errc() || magnitude > max + (negative ? 1 : 0))
            syntax("integer out of the 64-bit range: " + text, start);
        // Two's complement: -2^63 has no positive counterpart.
        const auto value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
        return nvInteger(static_cast<long long>(value));
    }

    std::string_view s_;
    std::size_t p_ = 0;
    int depth_ = 0;  // brackets and calls open at p_
    const std::vector<const ScriptFunction*>& functions_;
    const Variables& variables_;
};

// How deep vectors nest in v, counted up to limit + 1 levels: for what a
// function returns, which may hold any value it was given.
int nesting(const nvValue& v, int limit) {
    if (v.kind() != nvValue::Kind::Vector) return 0;
    int deepest = 0;
    for (unsigned i = 0; i < v.size() && limit > 0 && deepest < limit; ++i)
        deepest = std::max(deepest, nesting(v.value(i), limit - 1));
    return 1 + deepest;
}

// The value of e, and in *depth how deep vectors nest in it. Variables let
// a value grow a level a line, so the depth is bounded here as well as in
// the parser.
nvValue evaluate(const Expr& e, const Variables& variables, int* depth) {
    *depth = 0;
    switch (e.kind) {
        case Expr::Kind::Literal: return e.value;
        case Expr::Kind::Variable: {
            const auto& variable = variables.find(e.name)->second;
            *depth = variable.depth;
            return variable.value;
        }
        case Expr::Kind::Vector: {
            nvVector v(static_cast<unsigned>(e.items.size()), false, true, false);
            int deepest = 0;
            for (std::size_t i = 0; i < e.items.size(); ++i) {
                int item_depth = 0;
                v.setValue(evaluate(e.items[i], variables, &item_depth), static_cast<unsigned>(i));
                deepest = std::max(deepest, item_depth);
            }
            *depth = 1 + deepest;
            if (*depth > max_nesting) throw Fault("a value with vectors nested deeper than " + nesting_limit);
            return v;
        }
        case Expr::Kind::Call: {
            std::vector<nvValue> args;
            int ignored = 0;
            for (const auto& item : e.items) args.push_back(evaluate(item, variables, &ignored));
            try {
                nvValue result = invoke(*e.function, args);
                *depth = nesting(result, max_nesting);
                if (*depth > max_nesting) throw Fault("a value with vectors nested deeper than " + nesting_limit);
                return result;
            } catch (const Fault&) {
                throw;
            } catch (const std::exception& x) {
                throw Fault("'" + e.function->name + "' failed: " + x.what());
            } catch (...) {
                throw Fault("'" + e.function->name + "' failed with an unknown exception");
            }
        }
    }
    return nvValue();
}

}  // namespace

Interpreter::Interpreter(std::span<const ScriptFunction> functions, std::ostream& out,
                         std::ostream& err)
    : out_(out), err_(err) {
    for (const auto& f : functions) by_length_.push_back(&f);
    std::stable_sort(by_length_.begin(), by_length_.end(),
                     [](const auto* a, const auto* b) { return a->name.size() > b->name.size(); });
}

std::size_t Interpreter::run(std::string_view source, std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);  // a UTF-8 byte order mark
    std::size_t failed = 0;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        ++number;
        try {
            if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos)
                throw Fault("a NUL byte at column " + std::to_string(nul + 1));
            if (const std::size_t code = line.find_first_not_of(" \t");
                code != std::string_view::npos && line[code] == ':') {
                if (!directive_) throw Fault("directives are not taken here");
                directive_(line.substr(code + 1));
                continue;
            }
            auto st = Parser(line, by_length_, variables_).statement();
            if (!st) continue;
            int depth = 0;
            nvValue value = evaluate(st->expr, variables_, &depth);
            if (st->target.empty()) {
                if (printer_) printer_(out_, value);
                else out_ << value.repr() << '\n';
                out_.flush();
            } else {
                variables_.insert_or_assign(std::move(st->target), Variable{std::move(value), depth});
            }
        } catch (const std::exception& e) {
            ++failed;
            out_.flush();
            if (source.empty()) err_ << "error: ";
            else err_ << source << ':' << number << ": ";
            err_ << e.what() << '\n';
            if (const auto* fault = dynamic_cast<const Fault*>(&e)) {
                if (fault->column != std::string_view::npos) err_ << excerpt(line, fault->column);
                for (const auto& more : fault->detail) err_ << "    " << more << '\n';
            }
            err_.flush();
        }
    }
    failures_ += failed;
    return failed;
}

std::vector<std::string> Interpreter::variable_names() const {
    std::vector<std::string> names;
    for (const auto& [name, variable] : variables_) names.push_back(name);
    return names;
}

}  // namespace icphost
