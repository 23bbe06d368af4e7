#include "icphost/session.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>

#if defined(ICPHOST_HAVE_LIBEDIT)
#  include <dlfcn.h>
#  include <histedit.h>
#endif

#include <icp_platform/format.h>

#include "icphost/listing.h"
#include "icphost/text.h"

namespace icphost {

namespace {

constexpr const char* prompt_text = "icp> ";

bool starts_with(std::string_view text, std::string_view start, bool ignore_case) {
    if (text.size() < start.size()) return false;
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (ignore_case ? lower(text[i]) != lower(start[i]) : text[i] != start[i]) return false;
    }
    return true;
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

// Whether the text ends inside a string literal.
bool in_string(std::string_view text) {
    bool inside = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (inside && text[i] == '\\') ++i;
        else if (text[i] == '"') inside = !inside;
        else if (!inside && text[i] == '#') return true;  // a comment: nothing to complete
    }
    return inside;
}

// The names starting with `typed`: as typed, else ignoring letter case.
std::vector<std::string> starting_with(const std::vector<std::string>& names, std::string_view typed) {
    std::vector<std::string> out;
    for (bool ignore_case : {false, true}) {
        for (const auto& name : names)
            if (starts_with(name, typed, ignore_case)) out.push_back(name);
        if (!out.empty()) break;
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

std::string common_start(const std::vector<std::string>& names) {
    std::string start = names.front();
    for (const auto& name : names) {
        std::size_t n = 0;
        while (n < start.size() && n < name.size() && start[n] == name[n]) ++n;
        start.resize(n);
    }
    return start;
}

// A table: column names over aligned columns; numbers to the right.
void print_table(std::ostream& out, const nvValue& value) {
    const auto names = value.columnNames();
    const unsigned rows = value.rows(), columns = value.columns();
    std::vector<std::vector<std::string>> cells(rows + 1, std::vector<std::string>(columns));
    std::vector<std::size_t> width(columns, 0);
    std::vector<bool> numeric(columns, true);
    for (unsigned c = 0; c < columns; ++c) {
        cells[0][c] = names[c].isString() ? names[c].toString() : names[c].repr();
        for (unsigned r = 0; r < rows; ++r) {
            const nvValue cell = value.value(r * columns + c);
            cells[r + 1][c] = cell.repr();
            numeric[c] = numeric[c] && (cell.isInteger() || cell.isDouble());
        }
        for (const auto& row : cells) width[c] = std::max(width[c], row[c].size());
    }
    for (const auto& row : cells) {
        std::string line;
        for (unsigned c = 0; c < columns; ++c) {
            const std::string pad(width[c] - row[c].size(), ' ');
            line += (c > 0 ? "  " : "") + (numeric[c] && &row != &cells[0] ? pad + row[c] : row[c] + pad);
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        out << line << '\n';
    }
}

// ---- Reading lines ----------------------------------------------------------

class LineReader {
public:
    virtual ~LineReader() = default;
    // False at the end of the input.
    virtual bool read(std::string* line) = 0;
};

// std::getline, with a prompt on a terminal.
class PlainReader : public LineReader {
public:
    PlainReader(bool prompt, std::ostream& out) : prompt_(prompt), out_(out) {}
    bool read(std::string* line) override {
        if (prompt_) out_ << prompt_text << std::flush;
        if (std::getline(std::cin, *line)) return true;
        if (prompt_) out_ << '\n';
        return false;
    }

private:
    bool prompt_;
    std::ostream& out_;
};

#if defined(ICPHOST_HAVE_LIBEDIT)

// libedit is opened when a session on a terminal starts: scripts start
// without loading it, and where it is missing the session reads plain lines.
#  define ICPHOST_LIBEDIT_FUNCTIONS(F)                                                       \
    F(el_init) F(el_end) F(el_set) F(el_get) F(el_gets) F(el_line) F(el_insertstr) F(el_deletestr) \
    F(history_init) F(history_end) F(history)

struct Libedit {
#  define ICPHOST_FIELD(name) decltype(&::name) name;
    ICPHOST_LIBEDIT_FUNCTIONS(ICPHOST_FIELD)
#  undef ICPHOST_FIELD

    // Null when the library or one of its functions is missing. It stays
    // loaded: libedit keeps what EL_ADDFN gave it until the process ends.
    static const Libedit* open() {
        static const Libedit* const lib = []() -> const Libedit* {
            void* handle = dlopen(ICPHOST_LIBEDIT_SONAME, RTLD_NOW | RTLD_LOCAL);
            if (handle == nullptr) return nullptr;
            static Libedit l;
            bool found = true;
#  define ICPHOST_BIND(name)                                               \
    l.name = reinterpret_cast<decltype(&::name)>(dlsym(handle, #name)); \
    found = found && l.name != nullptr;
            ICPHOST_LIBEDIT_FUNCTIONS(ICPHOST_BIND)
#  undef ICPHOST_BIND
            return found ? &l : nullptr;
        }();
        return lib;
    }
};

// libedit: emacs key bindings, history kept in a file, Tab completion.
class EditReader : public LineReader {
public:
    using Completer = std::function<Completion(std::string_view)>;

    EditReader(const Libedit& lib, const char* program, std::string history_file, Completer completer,
               std::ostream& out)
        : lib_(lib), history_file_(std::move(history_file)), completer_(std::move(completer)), out_(out) {
        history_ = lib_.history_init();
        HistEvent ev;
        lib_.history(history_, &ev, H_SETSIZE, 1000);
        lib_.history(history_, &ev, H_SETUNIQUE, 1);
        if (!history_file_.empty()) lib_.history(history_, &ev, H_LOAD, history_file_.c_str());
        el_ = lib_.el_init(program, stdin, stdout, stderr);
        lib_.el_set(el_, EL_CLIENTDATA, this);
        lib_.el_set(el_, EL_PROMPT, +[](EditLine*) { return const_cast<char*>(prompt_text); });
        lib_.el_set(el_, EL_EDITOR, "emacs");
        lib_.el_set(el_, EL_SIGNAL, 1);
        lib_.el_set(el_, EL_HIST, lib_.history, history_);
        lib_.el_set(el_, EL_ADDFN, "icphost-complete", "Complete a function or variable name", &complete_key);
        lib_.el_set(el_, EL_BIND, "^I", "icphost-complete", nullptr);
    }
    ~EditReader() override {
        lib_.el_end(el_);
        lib_.history_end(history_);
    }
    EditReader(const EditReader&) = delete;
    EditReader& operator=(const EditReader&) = delete;

    bool read(std::string* line) override {
        int count = 0;
        const char* text = lib_.el_gets(el_, &count);
        if (text == nullptr || count <= 0) {
            out_ << '\n' << std::flush;
            return false;
        }
        line->assign(text, static_cast<std::size_t>(count));
        while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
        if (!trim(*line).empty()) {
            HistEvent ev;
            lib_.history(history_, &ev, H_ENTER, line->c_str());
            if (!history_file_.empty()) lib_.history(history_, &ev, H_SAVE, history_file_.c_str());
        }
        return true;
    }

private:
    static unsigned char complete_key(EditLine* el, int) {
        void* self = nullptr;
        Libedit::open()->el_get(el, EL_CLIENTDATA, &self);
        return static_cast<EditReader*>(self)->complete_line();
    }

    unsigned char complete_line() {
        const LineInfo* info = lib_.el_line(el_);
        const std::string_view before(info->buffer, static_cast<std::size_t>(info->cursor - info->buffer));
        const Completion c = completer_(before);
        if (c.candidates.empty()) return CC_REFRESH_BEEP;
        const std::string_view typed = before.substr(before.size() - c.replaces);
        if (c.text != typed) {
            lib_.el_deletestr(el_, static_cast<int>(c.replaces));
            lib_.el_insertstr(el_, c.text.c_str());
            return CC_REFRESH;
        }
        // Nothing to add: show what there is to choose from.
        std::size_t width = 0;
        for (const auto& name : c.candidates) width = std::max(width, name.size() + 2);
        const std::size_t per_line = std::max<std::size_t>(1, 80 / width);
        std::string list = "\n";
        for (std::size_t i = 0; i < c.candidates.size(); ++i) {
            std::string name = c.candidates[i];
            const bool last = (i + 1) % per_line == 0 || i + 1 == c.candidates.size();
            if (!last) name.resize(width, ' ');
            list += name + (last ? "\n" : "");
        }
        std::fputs(list.c_str(), stdout);
        std::fflush(stdout);
        return CC_REDISPLAY;
    }

    const Libedit& lib_;
    std::string history_file_;
    Completer completer_;
    std::ostream& out_;
    History* history_ = nullptr;
    EditLine* el_ = nullptr;
};

#endif

const char* session_help =
    "A line is a statement (name = expression, or an expression whose value is\n"
    "printed), a directive (a line starting with ':') or one of these commands:\n"
    "  help NAME            a function's help\n"
    "  functions [PATTERN]  the functions by group (PATTERN: a part of the name,\n"
    "                       or a pattern with * and ?)\n"
    "Tab completes function and variable names; the end of the input (Ctrl-D)\n"
    "leaves. Directives:\n";

// "help ..." and "functions ..." are commands unless they assign or call.
bool command(std::string_view line, std::string_view word, std::string_view* rest) {
    line = trim(line);
    if (!line.starts_with(word)) return false;
    std::string_view after = line.substr(word.size());
    if (!after.empty() && after.front() != ' ' && after.front() != '\t') return false;
    after = trim(after);
    if (!after.empty() && (after.front() == '=' || after.front() == '(')) return false;
    *rest = after;
    return true;
}

}  // namespace

Completion complete(std::string_view before, std::span<const ScriptFunction> functions,
                    const std::vector<std::string>& variables, const std::vector<std::string>& directives) {
    Completion c;
    if (in_string(before)) return c;
    std::vector<std::string> function_names;
    for (const auto& f : functions) function_names.push_back(f.name);

    const std::string_view line = trim(before.substr(0, before.size()));
    std::string_view rest;
    std::string_view typed;
    enum { Directive, FunctionOnly, Anything } kind = Anything;
    if (line.starts_with(':') && line.find_first_of(" \t") == std::string_view::npos) {
        typed = line.substr(1);
        kind = Directive;
    } else if (command(before, "help", &rest)) {
        typed = rest;
        kind = FunctionOnly;
    } else {
        const std::size_t cut = before.find_last_of("(,=[");
        typed = before.substr(cut == std::string_view::npos ? 0 : cut + 1);
        while (!typed.empty() && (typed.front() == ' ' || typed.front() == '\t')) typed.remove_prefix(1);
    }
    if (kind != Directive && (typed.empty() || !is_name_start(typed.front()))) return c;

    std::vector<std::string> found;
    if (kind == Directive) {
        found = starting_with(directives, typed);
    } else {
        found = starting_with(function_names, typed);
        if (kind == Anything && typed.find_first_of(" \t") == std::string_view::npos) {
            for (auto& v : starting_with(variables, typed)) found.push_back(std::move(v));
            std::sort(found.begin(), found.end());
            found.erase(std::unique(found.begin(), found.end()), found.end());
        }
    }
    if (found.empty()) return c;
    c.replaces = typed.size();
    c.text = common_start(found);
    if (c.text.size() < typed.size()) c.text = std::string(typed);
    if (found.size() == 1) {
        const bool function = std::find(function_names.begin(), function_names.end(), found[0]) != function_names.end();
        const bool variable = std::find(variables.begin(), variables.end(), found[0]) != variables.end();
        if (kind == Directive) c.text += ' ';
        else if (kind == Anything && function && !variable) c.text += '(';
    }
    c.candidates = std::move(found);
    return c;
}

void print_value(std::ostream& out, const nvValue& value) {
    if (value.kind() == nvValue::Kind::Matrix && !value.columnNames().empty() && value.columns() > 0) {
        print_table(out, value);
    } else {
        out << value.repr() << '\n';
    }
}

std::string default_history_path() {
    if (const char* path = std::getenv("ICPHOST_HISTORY")) return path;
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return std::string(home) + "/.icphost_history";
    return "";
}

int run_session(std::span<const ScriptFunction> functions, Interpreter& interpreter,
                const SessionSettings& settings, std::ostream& out, std::ostream& err) {
    interpreter.set_printer(&print_value);
    std::unique_ptr<LineReader> reader;
#if defined(ICPHOST_HAVE_LIBEDIT)
    if (const Libedit* lib = settings.terminal ? Libedit::open() : nullptr) {
        auto completer = [&](std::string_view before) {
            return complete(before, functions, interpreter.variable_names(), settings.directives);
        };
        reader = std::make_unique<EditReader>(*lib, "icphost", settings.history, completer, out);
    }
#endif
    if (!reader) reader = std::make_unique<PlainReader>(settings.terminal, out);
    if (settings.terminal) {
        out << "icphost: " << functions.size()
            << " script functions. Type help for help; the end of the input (Ctrl-D) leaves.\n"
            << std::flush;
    }

    std::string line;
    while (reader->read(&line)) {
        std::string_view rest;
        if (command(line, "help", &rest)) {
            if (rest.empty()) {
                out << session_help << settings.directives_help << std::flush;
                continue;
            }
            if (const auto* f = find_function(functions, rest)) {
                print_help(out, *f);
                out.flush();
            } else {
                err << "error: unknown function " << quoted(rest)
                    << did_you_mean(nearest_names(functions, rest)) << '\n' << std::flush;
            }
            continue;
        }
        if (command(line, "functions", &rest)) {
            std::vector<const ScriptFunction*> chosen;
            for (const auto* f : catalogue_order(functions))
                if (matches(*f, rest)) chosen.push_back(f);
            if (chosen.empty()) err << "error: no function matches " << quoted(rest) << "\n" << std::flush;
            print_summary(out, chosen);
            out.flush();
            continue;
        }
        interpreter.run("", line);
    }
    return 0;
}

}  // namespace icphost
