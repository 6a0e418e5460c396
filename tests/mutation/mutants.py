# SPDX-License-Identifier: MIT
# Finds the places of a C++ file where a small mistake could have been made, and writes the file
# with all these mistakes in it, each behind `mutation::is(number)`. So one build holds all mutants,
# and the environment chooses one of them. Used by mutate.py; needs Debian's python3-clang-14.
import clang.cindex
from clang.cindex import CursorKind, TypeKind

# What mutated files include. A number of its own for each mutant; 0 is the program as it is.
# MUTATION_LOG names a file of LIMIT bytes, in which the byte of each mutant that is reached is set.
LIMIT = 1 << 18
PRELUDE = r"""#pragma once
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
namespace mutation {
inline char* openLog()
{
    const char* const path = std::getenv("MUTATION_LOG");
    if (!path)
        return nullptr;
    const int file = ::open(path, O_RDWR | O_CLOEXEC);
    void* const log = ::mmap(nullptr, LIMIT, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return log == MAP_FAILED ? nullptr : static_cast<char*>(log);
}
inline bool is(int number)
{
    static const int chosen = std::getenv("MUTATION") ? std::atoi(std::getenv("MUTATION")) : 0;
    static char* const log = openLog();
    if (log)
        log[number] = 1;
    return number == chosen;
}
template <typename T>
const T& other()
{
    static const T value = T();
    return value;
}
} // namespace mutation
""".replace("LIMIT", str(LIMIT))

INDEX = clang.cindex.Index.create(excludeDecls=True)

OPERATORS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"],
    "+=": ["-=", "="], "-=": ["+=", "="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="],
    "<<=": [">>="], ">>=": ["<<="],
    "&&": ["||"], "||": ["&&"],
}
RELATIONS = {"<", "<=", ">", ">=", "==", "!="}
SWAPPED_CALLS = {"qMax": "qMin", "qMin": "qMax"}
TRACES = {"traceMessage", "_Q_Trace", "_Q_TraceOld"}
FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
    CursorKind.FUNCTION_TEMPLATE, CursorKind.CONVERSION_FUNCTION,
}
REMOVABLE = {
    CursorKind.CALL_EXPR, CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR,
    CursorKind.UNARY_OPERATOR, CursorKind.UNEXPOSED_EXPR, CursorKind.CXX_DELETE_EXPR,
    CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT,
}
LOOPS_AND_BRANCHES = {
    CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.FOR_STMT, CursorKind.DO_STMT,
    CursorKind.CXX_FOR_RANGE_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT,
}
INTEGERS = {
    TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG,
    TypeKind.ULONGLONG, TypeKind.SHORT, TypeKind.USHORT, TypeKind.SCHAR, TypeKind.UCHAR,
    TypeKind.CHAR_S, TypeKind.FLOAT, TypeKind.DOUBLE,
}


class Mutant:
    def __init__(self, file, function, line, span, before, after, code, is_statement):
        self.file, self.function, self.line, self.span = file, function, line, span
        self.code, self.is_statement = code, is_statement  # what stands there instead
        self.change = f"{shortened(before)} -> {shortened(after)}"
        self.number = 0
        self.key = ""  # says which one it is, also after lines were added elsewhere

    @property
    def name(self):
        return self.key.rstrip()


def shortened(text, limit=90):
    text = " ".join(text.split())
    return text if len(text) <= limit else text[: limit - 3] + "..."


class Finder:
    def __init__(self, root, path, arguments):
        self.root, self.path = root, path
        self.source = (root / path).read_bytes()
        self.mutants = {}
        self.function = ""
        unit = INDEX.parse(
            str(root / path), arguments,
            options=clang.cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        errors = [d for d in unit.diagnostics if d.severity >= d.Error]
        if errors:
            raise SystemExit(f"{path}: {errors[0]}")
        top = [c for c in unit.cursor.get_children()
               if c.location.file and c.location.file.name == str(root / path)]
        self.macros = [span(c) for c in top if c.kind == CursorKind.MACRO_INSTANTIATION]
        for cursor in top:
            self.visit(cursor)

    def text(self, first, last):
        return self.source[first:last].decode()

    def add(self, where, after, code=None, is_statement=False):
        first, last = where
        if any(first < end and start < last and not (first <= start and end <= last)
               for start, end in self.macros):
            return
        before = self.text(first, last)
        key = (first, last, code if code is not None else after)
        line = self.source.count(b"\n", 0, first) + 1
        self.mutants.setdefault(key, Mutant(self.path, self.function, line, where, before,
                                            after, key[2], is_statement))

    def visit(self, cursor):
        kind = cursor.kind
        where = span(cursor)
        if kind in (CursorKind.ENUM_DECL, CursorKind.STATIC_ASSERT, CursorKind.MACRO_INSTANTIATION):
            return
        if any(start <= where[0] and where[1] <= end for start, end in self.macros):
            return  # what a macro such as QStringLiteral is made of
        if kind == CursorKind.VAR_DECL or kind in FUNCTIONS:
            if b"constexpr" in self.source[where[0]:cursor.location.offset]:
                return
        if kind == CursorKind.VAR_DECL:
            initial = [c for c in cursor.get_children()][-1:]
            if initial and initial[0].kind.is_expression() and \
                    cursor.type.get_canonical().kind == TypeKind.BOOL:
                self.negate(initial[0])
        outer = self.function
        parent = cursor.semantic_parent
        is_lambda = parent and parent.kind == CursorKind.CLASS_DECL and not parent.spelling
        if kind in FUNCTIONS and cursor.spelling and not is_lambda:
            scope = "" if parent.kind in (CursorKind.NAMESPACE, CursorKind.TRANSLATION_UNIT) \
                else parent.spelling + "::"
            self.function = scope + cursor.spelling.split("<")[0]

        children = list(cursor.get_children())
        self.visit_expression(cursor, kind, where, children)
        if kind == CursorKind.RETURN_STMT and children:
            self.mutate_return(where, children[0])
        if kind == CursorKind.COMPOUND_STMT:
            for child in children:
                self.remove(child)
        elif kind in LOOPS_AND_BRANCHES and children:
            bodies = children[-2:] if kind == CursorKind.IF_STMT else children[-1:]
            for body in bodies:
                if self.source[:span(body)[0]].rstrip()[-1:] in b"):e":  # not the condition
                    self.remove(body)
        if kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT):
            condition = next((c for c in children if c.kind.is_expression()), None)
            if condition and children[0] == condition:
                self.negate(condition)
        if kind == CursorKind.CONDITIONAL_OPERATOR:
            self.negate(children[0])
        if not (kind == CursorKind.CALL_EXPR and cursor.spelling in TRACES):
            for child in children:
                self.visit(child)
        self.function = outer

    def visit_expression(self, cursor, kind, where, children):
        text = self.text(*where)
        binary = self.binary(cursor)
        if binary:
            operator, left, right = binary
            for other in OPERATORS[operator]:
                self.add(where, f"{self.text(*left)} {other} {self.text(*right)}")
            if operator in ("&&", "||"):
                self.add(where, self.text(*left), f"bool({self.text(*left)})")
                self.add(where, self.text(*right), f"bool({self.text(*right)})")
        elif kind == CursorKind.UNARY_OPERATOR:
            if text.startswith("!"):
                self.add(where, text[1:], f"bool({text[1:]})")
            for one, other in (("++", "--"), ("--", "++")):
                if text.startswith(one):
                    self.add(where, other + text[2:])
                elif text.endswith(one):
                    self.add(where, text[:-2] + other)
        elif kind in (CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL):
            self.add(where, f"{text} + 1")
            if text.rstrip("uUlL") not in ("0", "0.0"):
                self.add(where, f"{text} - 1")
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            self.add(where, "true" if text == "false" else "false")
        elif kind == CursorKind.CHARACTER_LITERAL:
            self.add(where, "'~'")
        elif kind == CursorKind.STRING_LITERAL:
            self.add(where, '"~"')
        elif kind == CursorKind.DECL_REF_EXPR and cursor.referenced:
            self.visit_name(cursor, where, text)

    def visit_name(self, cursor, where, text):
        named = cursor.referenced
        if text in SWAPPED_CALLS:
            self.add(where, SWAPPED_CALLS[text])
        elif named.kind == CursorKind.ENUM_CONSTANT_DECL and text.endswith(named.spelling):
            # The next one of the enumeration.
            names = list(named.semantic_parent.get_children())
            at = next(i for i, n in enumerate(names) if n.spelling == named.spelling)
            following = [n for n in names[at + 1:] + names[:at]
                         if n.kind == named.kind and n.enum_value != named.enum_value]
            if following:
                self.add(where, text[: len(text) - len(named.spelling)] + following[0].spelling)
        elif named.kind == CursorKind.VAR_DECL and named.spelling.isupper():
            if named.type.get_canonical().kind in INTEGERS:
                self.add(where, f"{text} + 1")
                self.add(where, f"{text} - 1")
            elif named.type.spelling == "const QString":
                self.add(where, "QString()", "::mutation::other<QString>()")
            elif named.type.spelling.startswith("const QLatin1"):
                literal = "'~'" if "Char" in named.type.spelling else '"~"'
                self.add(where, f"{named.type.spelling.split()[1]}({literal})")

    def binary(self, cursor):
        """The operator and the spans of its two operands."""
        if cursor.kind not in (CursorKind.BINARY_OPERATOR, CursorKind.CALL_EXPR,
                               CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            return None
        operands = [span(c) for c in cursor.get_children()]
        operands = [s for s in operands if self.text(*s) not in OPERATORS]
        if len(operands) != 2 or operands[0][1] > operands[1][0]:
            return None
        operator = self.text(operands[0][1], operands[1][0]).strip()
        return (operator, *operands) if operator in OPERATORS else None

    def negate(self, condition):
        """Unless another mutant says the opposite anyway."""
        where = span(condition)
        while condition.kind in (CursorKind.UNEXPOSED_EXPR, CursorKind.PAREN_EXPR):
            inner = list(condition.get_children())
            if len(inner) != 1:
                break
            condition = inner[0]
        binary = self.binary(condition)
        text = self.text(*where)
        if binary and binary[0] in RELATIONS or text.startswith("!") or text in ("true", "false"):
            return
        self.add(where, f"!({text})")

    def remove(self, statement):
        first, last = span(statement)
        if statement.kind == CursorKind.RETURN_STMT and list(statement.get_children()):
            return
        if statement.kind not in REMOVABLE | {CursorKind.RETURN_STMT}:
            return
        end = self.source.find(b";", last)
        if end >= 0 and not self.source[last:end].strip():
            self.add((first, end + 1), "", "", is_statement=True)

    def mutate_return(self, where, value):
        first, last = where[0], self.source.find(b";", where[1]) + 1
        text = self.text(*span(value))
        kind = value.type.get_canonical().kind
        if kind == TypeKind.BOOL:
            self.negate(value)
        elif kind in INTEGERS:
            if not self.binary(value) and not text.isdigit() and not text.isupper():
                self.add(span(value), f"{text} + 1")
        elif kind in (TypeKind.RECORD, TypeKind.POINTER):
            empty = "nullptr" if kind == TypeKind.POINTER else "{}"
            if text not in ("nullptr", "{}", "std::nullopt", "QString()", "*this"):
                self.add((first, last), f"return {empty};", is_statement=True)


def precompile(arguments, header):
    """Saves the headers that take longest to read. Returns the arguments that make use of them."""
    header.write_text("#include <QtCore/QtCore>\n")
    unit = INDEX.parse(str(header), ["-xc++-header", *arguments],
                       options=clang.cindex.TranslationUnit.PARSE_INCOMPLETE |
                       clang.cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    saved = header.with_suffix(".pch")
    unit.save(str(saved))
    return ["-xc++", *arguments, "-include-pch", str(saved)]


def span(cursor):
    return cursor.extent.start.offset, cursor.extent.end.offset


def find(root, path, arguments):
    """All mutants of a file, by place, each with a key of its own."""
    finder = Finder(root, path, arguments)
    mutants = sorted(finder.mutants.values(), key=lambda m: (m.span[0], -m.span[1], m.code))
    seen = {}
    for mutant in mutants:
        key = f"{mutant.file} {mutant.function}: {mutant.change}"
        seen[key] = seen.get(key, 0) + 1
        mutant.key = key if seen[key] == 1 else f"{key} #{seen[key]}"
    return mutants


class MutatedSource:
    """A file with its mutants in it, and where each of them stands there."""

    def __init__(self, source, mutants):
        self.out = bytearray(b'#include "mutation.h"\n')
        self.branches = []  # (start, end, mutants)
        self.source = source
        self.mutants = mutants
        nodes = {}
        for mutant in mutants:
            nodes.setdefault(mutant.span, []).append(mutant)
        self.write(0, len(source), sorted(nodes.items(), key=lambda n: (n[0][0], -n[0][1])))

    def write(self, first, last, nodes):
        at = first
        while nodes:
            (start, end), mutants = nodes[0]
            inner = [n for n in nodes[1:] if n[0][1] <= end]
            nodes = [n for n in nodes[1:] if n[0][1] > end]
            self.out += self.source[at:start]
            self.wrap(start, end, mutants, inner)
            at = end
        self.out += self.source[at:last]

    def wrap(self, start, end, mutants, inner):
        begin = len(self.out)
        is_statement = mutants[0].is_statement
        self.out += b"{ " if is_statement else b"("
        for mutant in mutants:
            branch = len(self.out)
            form = "if (::mutation::is(%d)) { %s } else " if is_statement \
                else "::mutation::is(%d) ? (%s) : "
            self.out += (form % (mutant.number, mutant.code)).encode()
            self.branches.append((branch, len(self.out), [mutant]))
        self.out += b"{ " if is_statement else b"("
        self.write(start, end, inner)
        self.out += b" } }" if is_statement else b"))"
        self.branches.append((begin, len(self.out), mutants))

    def blame(self, line, column):
        """Which mutants the compiler complains about there."""
        offset = sum(len(l) + 1 for l in self.out.split(b"\n")[: line - 1]) + column - 1
        around = [b for b in self.branches if b[0] <= offset < b[1]]
        if around:
            return min(around, key=lambda b: b[1] - b[0])[2]
        return [m for b in self.branches for m in b[2]
                if self.out.count(b"\n", 0, b[0]) <= line - 1 <= self.out.count(b"\n", 0, b[1])]


def compilable(root, path, arguments, mutants):
    """The file with those mutants that the compiler takes."""
    source = (root / path).read_bytes()
    while True:
        mutated = MutatedSource(source, mutants)
        unit = INDEX.parse(
            str(root / path), arguments + ["-ferror-limit=0", "-w", "-Wno-c++11-narrowing"],
            unsaved_files=[(str(root / path), mutated.out.decode())])
        errors = [d for d in unit.diagnostics if d.severity >= d.Error]
        refused = {m for e in errors if e.location.file and e.location.file.name == str(root / path)
                   for m in mutated.blame(e.location.line, e.location.column)}
        if errors and not refused:
            raise SystemExit(f"{path}: {errors[0]}")
        if not refused:
            return mutated
        mutants = [m for m in mutants if m not in refused]
