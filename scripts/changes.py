# SPDX-License-Identifier: MIT
"""The small wrong changes that can be made in a source file of C++ or Objective-C++, each as a piece of text and another.

A file is cut into tokens and never parsed. A change that is no program, or the same one, is found out when it is compiled.
"""

import re
from dataclasses import dataclass, field

TOKEN = re.compile(
    r'(?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n\\]|\\\n|\\.)*)'
    r'|(?P<string>(?:u8|u|U|L)?R"(?P<tag>[^(\s]*)\(.*?\)(?P=tag)"|(?:@|u8|u|U|L)?"(?:[^"\\\n]|\\.)*")'
    r"|(?P<character>(?:u8|u|U|L)?'(?:[^'\\\n]|\\.)+')"
    r"|(?P<number>0[xX][0-9A-Fa-f']+[uUlL]*|\d[\d']*(?:\.\d*)?(?:[eE][-+]?\d+)?[uUlLfF]*|\.\d+)"
    r'|(?P<name>@?[A-Za-z_]\w*)'
    r'|(?P<sign><=>|->\*|<<=|>>=|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)', re.S | re.M)

PAIRS = {"(": ")", "[": "]", "{": "}"}
COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<", ">=": ">"}
ARITHMETIC = {"+": "-", "-": "+", "*": "+", "/": "*", "%": "+", "|": "&", "&": "|", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="}
# What is taken for its neighbour, in both directions.
NEIGHBOURS = {a: b for pair in [
    ("front", "back"), ("begin", "end"), ("first", "second"), ("min", "max"), ("lower_bound", "upper_bound"),
    ("firstObject", "lastObject"), ("all_of", "any_of"), ("any_of", "none_of"), ("push_back", "pop_back"), ("try_emplace", "insert_or_assign"), ("find", "rfind"),
    ("width", "height"), ("origin", "size"), ("plain", "shifted"), ("latin", "hebrew"), ("down", "up"),
] for a, b in (pair, reversed(pair))}
OWNERSHIP = {"adopt": "share", "share": "adopt", "weak": "strong", "strong": "weak", "copy": "assign", "retain": "assign",
             "assign": "strong", "weak_ptr": "shared_ptr"}
DECLARES = {"const", "constexpr", "auto", "static", "using", "struct", "class", "enum", "union", "typedef", "namespace", "template",
            "extern", "unsigned", "signed", "int", "bool", "char", "double", "float", "long", "short", "void", "friend",
            "static_assert", "__block", "__weak", "__strong", "thread_local", "public", "private", "protected", "goto", "throw"}
HEADS = {"if", "while", "for", "switch", "catch"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Change:
    """One piece of a file and what stands there instead."""
    file: str  # from the root of the tree
    sort: str
    start: int
    end: int
    after: str
    line: int = field(compare=False)
    key: str = field(compare=False)  # the line's text, with the lines above it as far as it is not the only one
    title: str = field(compare=False)  # the change in one line

    def applied(self, text):
        return text[:self.start] + self.after + text[self.end:]


def tokens_of(text):
    return [Token(m.lastgroup if m.lastgroup != "tag" else "string", m.group(), m.start(), m.end())
            for m in TOKEN.finditer(text) if m.lastgroup != "skip"]


def one_line(text, limit=90):
    text = " ".join(text.split()) or "(nothing)"
    return text if len(text) <= limit else text[:limit - 3] + "..."


class Vocabulary:
    """Names that can be taken for each other: enumerators of one type, constants and selectors with one beginning."""

    def __init__(self, texts):
        self.scoped, self.names, self.selectors = {}, set(), set()
        for text in texts:
            for scope, name in re.findall(r"\b([A-Z]\w+)::([a-z]\w*)\b(?!\s*\()", text):
                self.scoped.setdefault(scope, set()).add(name)
            self.names.update(re.findall(r"\b(?:k[A-Z]|NS|XCB_|ATSPI_|AX|CF|CG|TIS|G_)\w{4,}\b", text))
            self.selectors.update(re.findall(r"[-+] ?\([^)]*\) ?([a-z]\w+)", text))
            self.selectors.update(re.findall(r"@property[^;]*?\b([a-z]\w+);", text))
        self.sorted = {"names": sorted(self.names), "selectors": sorted(self.selectors)}

    def enumerator(self, scope, name):
        others = sorted(self.scoped.get(scope, set()))
        if len(others) < 2 or name not in others:
            return None
        return others[(others.index(name) + 1) % len(others)]

    def similar(self, which, name, count=2):
        """The names with the longest beginning in common, or, for a selector, the same last word."""
        words = re.findall(r"[A-Z]+(?![a-z])|[A-Z]?[a-z]+|\d+|_", name)
        least = max(3 if which == "names" else 5, len("".join(words[:2])) if len(words) > 2 else 4)
        found = []
        for other in self.sorted[which]:
            if other == name:
                continue
            same = next((i for i, (a, b) in enumerate(zip(name, other)) if a != b), min(len(name), len(other)))
            ends = which == "selectors" and len(words) > 1 and len(words[-1]) > 3 and other.endswith(words[-1])
            if same >= least or ends:
                found.append((-same, abs(len(other) - len(name)), other))
        return [other for _, _, other in sorted(found)[:count]]


class Source:
    """One file, and every change that can be made in it."""

    def __init__(self, name, text, vocabulary):
        self.name, self.text, self.vocabulary = name, text, vocabulary
        self.tokens = tokens_of(text)
        self.match, self.parent = self._brackets()
        self.bodies = [i for i, t in enumerate(self.tokens) if t.text == "{" and self._is_body(i)]
        self.inside = self._covered(self.bodies)
        self.lines = [line.strip() for line in text.split("\n")]
        self.found = {}

    def changes(self):
        for body in self.bodies:
            self._statements(body)
        for i, token in enumerate(self.tokens):
            self._word(i, token)
            if token.text in ("(", "{", "[") and i in self.match:
                self._list(i)
        return sorted(self.found.values(), key=lambda change: (change.start, change.end, change.after))

    # -- the shape of the file

    def _brackets(self):
        match, parent, open_ = {}, {}, []
        for i, token in enumerate(self.tokens):
            if token.text in ")]}" and len(token.text) == 1 and open_:
                opened = open_.pop()
                match[opened], match[i] = i, opened
            parent[i] = open_[-1] if open_ else None
            if token.text in PAIRS:
                open_.append(i)
        return match, parent

    def _text(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def _is_body(self, i):
        before = self._text(i - 1)
        if before in (")", "else", "do", "try", "@autoreleasepool", "const", "override", "noexcept", "mutable", "final"):
            return before != "final"
        if before == "]" or (before == "^"):
            return True
        if before in ("{", "}", ";", ":"):
            return self.parent[i] is not None and self._is_body(self.parent[i])
        run = i - 1  # a method of Objective-C, or a lambda that names its type
        while run >= 0 and self._text(run) not in (";", "{", "}", "@implementation", "@end", "@interface"):
            if self._text(run) == "->" and i - run < 8 and self._text(run - 1) == ")":
                return True
            run -= 1
        return self._text(run + 1) in ("-", "+") and self._text(run + 2) == "("

    def _covered(self, bodies):
        inside = [False] * len(self.tokens)
        for body in bodies:
            for i in range(body + 1, self.match.get(body, body)):
                inside[i] = True
        return inside

    # -- making a change

    def _add(self, sort, first, last, after, near=None):
        """Replaces the tokens from first to last, both included."""
        start, end = self.tokens[first].start, self.tokens[last].end
        before = self.text[start:end]
        if before == after or (start, end, after) in self.found:
            return
        line = self.text.count("\n", 0, start)
        key, above = [self.lines[line]], line
        while above > 0 and self._count(key) > 1:
            above -= 1
            key.insert(0, self.lines[above])
        title = f"{sort}: {one_line(before)} -> {one_line(after)}"
        same = sum(1 for c in self.found.values() if c.line == line + 1 and c.title.split(" (no. ")[0] == title)
        if same:
            title += f" (no. {same + 1} of the line)"
        self.found[(start, end, after)] = Change(self.name, sort, start, end, after, line + 1, "\n".join(key), title)

    def _count(self, key):
        return sum(1 for i in range(len(self.lines) - len(key) + 1) if self.lines[i:i + len(key)] == key)

    # -- statements

    def _statements(self, body):
        i, end = body + 1, self.match.get(body, body)
        while i < end:
            token = self.tokens[i].text
            if token == "{":
                i = self.match.get(i, i) + 1
            elif token in HEADS:
                if self._text(i + 1) == "constexpr":
                    i += 1
                close = self.match.get(i + 1, i + 1)
                if token in ("if", "while"):
                    self._condition(token, i + 1, close)
                i = close + 1
            elif token in ("case", "default"):
                while i < end and self._text(i) != ":":
                    i += 1
                i += 1
            elif token in ("else", "do", "try", ";", "}", "@autoreleasepool"):
                if token == "@autoreleasepool":
                    self._add("ownership", i, i, "")
                i += 1
            else:
                last = i
                while last < end and self._text(last) != ";":
                    last = self.match.get(last, last) if self._text(last) in PAIRS else last
                    last += 1
                if last < end:
                    self._statement(i, last)
                i = last + 1

    def _statement(self, first, last):
        head = self._text(first)
        if head == "return":
            if last > first + 1:
                self._returned(first, last)
            else:
                self._add("statement", first, last, ";")
        elif "reserve" in (self._text(i) for i in range(first, min(last, first + 4))):
            return  # gains time, and shows nowhere else
        elif head in ("break", "continue") or (head not in DECLARES and not self._declares(first, last)):
            self._add("statement", first, last, ";")

    def _returned(self, first, last):
        value = self.text[self.tokens[first + 1].start:self.tokens[last - 1].end]
        if value in ("true", "false", "YES", "NO"):
            return  # the constant itself is changed
        if value not in ("{}", "nullptr", "nil", "std::nullopt") and not re.fullmatch(r"\d+|\w+\(\)|\w+\{\}", value):
            self._add("return", first + 1, last - 1, "{}")
        if re.match(r"[^{}]*(==|!=|<=|>=| < | > |&&|\|\|)", value) or value.startswith("!"):
            self._add("return", first + 1, last - 1, f"!({value})")

    def _declares(self, first, last):
        """Whether a name follows a name (Type name), with the signs of a type between them."""
        i, named = first, False
        while i < last:
            token = self.tokens[i]
            if token.kind == "name":
                if named:
                    return True
                named = True
            elif token.text == "::":
                named = False
            elif token.text == "<":
                depth = 0
                while i < last:
                    depth += {"<": 1, ">": -1, ">>": -2}.get(self._text(i), 0)
                    if depth <= 0:
                        break
                    i += 1
            elif token.text not in ("*", "&", "&&"):
                return False
            i += 1
        return False

    def _condition(self, word, open_, close):
        if close <= open_ + 1:
            return
        first, last = open_ + 1, close - 1
        for i in range(first, last + 1):
            if self._text(i) == ";" and self.parent[i] == open_:
                first = i + 1
        assigns = any(self._text(i) == "=" and self.parent[i] == open_ for i in range(first, last + 1))
        what = self.text[self.tokens[first].start:self.tokens[last].end]
        if assigns:
            self._add("condition", first, last, f"{what}; false")
            return
        self._add("condition", first, last, "false")
        if word == "if":
            self._add("condition", first, last, f"!({what})")
            self._add("condition", first, last, "true")

    # -- words

    def _spaced(self, i):
        return self.tokens[i].start > self.tokens[i - 1].end and i + 1 < len(self.tokens) and \
            self.tokens[i + 1].start > self.tokens[i].end

    def _word(self, i, token):
        text, before, after = token.text, self._text(i - 1), self._text(i + 1)
        if token.kind == "sign":
            if self.inside[i]:
                self._sign(i, text, before, after)
        elif token.kind == "number":
            self._number(i, text)
        elif token.kind == "string":
            if before != "(" or self._text(i - 2) not in ("static_assert", "alignas"):
                at = text.rfind('"')
                self._add("constant", i, i, text[:at] + "X" + text[at:] if "R\"" not in text[:4] else text)
        elif token.kind == "character" and self.inside[i]:
            self._add("constant", i, i, re.sub(r"'.*'", "'x'" if "'x'" not in text else "'y'", text))
        elif token.kind == "name":
            self._name(i, text, before, after)

    def _sign(self, i, text, before, after):
        if text in ("&&", "||") and self._spaced(i):
            self._add("condition", i, i, "||" if text == "&&" else "&&")
            self._operands(i)
        elif text == "!" and (after == "(" or self.tokens[i + 1].kind == "name"):
            self._add("condition", i, i, "")
        elif text == "?":
            self._choice(i)
        elif text in COMPARISONS and self._spaced(i):
            self._add("comparison", i, i, COMPARISONS[text])
        elif text in ARITHMETIC and self._spaced(i) and (text not in "*&" or self.tokens[i - 1].kind != "name" or
                                                        before not in DECLARES):
            self._add("arithmetic", i, i, ARITHMETIC[text])
        elif text in ("++", "--"):
            self._add("arithmetic", i, i, "--" if text == "++" else "++")

    def _edge(self, i, step, stops):
        """The last token of the operand that begins beside i."""
        at, last = i + step, i
        while 0 <= at < len(self.tokens):
            token = self._text(at)
            if token in (")", "]", "}") and step < 0 or token in PAIRS and step > 0:
                at = self.match.get(at, at)
            elif token in stops or token in ("(", "[", "{", ")", "]", "}", ";", ",", "return", "?", ":", "=") and \
                    self.tokens[at].kind in ("sign", "name"):
                break
            last = at
            at += step
        return last

    def _operands(self, i):
        stops = ("||",) if self._text(i) == "&&" else ()
        left, right = self._edge(i, -1, stops), self._edge(i, 1, ("||", "&&") if self._text(i) == "&&" else ("||",))
        if left < i < right:
            self._add("condition", i, right, "")
            self._add("condition", left, i, "")

    def _choice(self, i):
        colon = self._edge(i, 1, (":",)) + 1
        if self._text(colon) != ":":
            return
        end = self._edge(colon, 1, ())
        if end > colon:
            first = self.text[self.tokens[i + 1].start:self.tokens[colon - 1].end]
            second = self.text[self.tokens[colon + 1].start:self.tokens[end].end]
            self._add("condition", i + 1, end, f"{second} : {first}")

    def _number(self, i, text):
        if self._text(i - 1) in (",", "<") and self._text(i + 1) == ">":
            return  # how much room there is, not what is in it
        digits = text.replace("'", "")
        hexadecimal = re.fullmatch(r"(0[xX])([0-9A-Fa-f]+)(\w*)", digits)
        plain = re.fullmatch(r"(\d+)([uUlL]*)", digits)
        inside = self._text(i - 1) == "[" and self._text(i + 1) == "]"
        if hexadecimal:
            value = int(hexadecimal.group(2), 16)
            self._add("constant", i, i, f"0x{value << 1 if value else 1:X}{hexadecimal.group(3)}")
            if value > 1:
                self._add("constant", i, i, f"0x{value - 1:X}{hexadecimal.group(3)}")
        elif plain:
            value = int(plain.group(1))
            self._add("item" if inside else "constant", i, i, f"{value + 1}{plain.group(2)}")
            if value > 1:
                self._add("item" if inside else "constant", i, i, f"{value - 1}{plain.group(2)}")
        else:
            self._add("constant", i, i, f"({text} + 1)")

    def _name(self, i, text, before, after):
        if text in ("true", "false", "YES", "NO"):
            sort = "return" if before == "return" else "constant"
            self._add(sort, i, i, {"true": "false", "false": "true", "YES": "NO", "NO": "YES"}[text])
        elif before == "::" and self.tokens[i - 2].kind == "name" and after not in ("(", "::") and \
                (other := self.vocabulary.enumerator(self._text(i - 2), text)) and self._text(i - 3) != "case":
            self._add("similar", i, i, other)
        elif text in OWNERSHIP and (before in ("::", "(", ",") and (before == "::" or self._in_property(i))):
            self._add("ownership", i, i, OWNERSHIP[text])
        elif text in ("__weak", "__bridge_transfer", "__bridge_retained"):
            self._add("ownership", i, i, {"__weak": "", "__bridge_transfer": "__bridge", "__bridge_retained": "__bridge"}[text])
        elif text in NEIGHBOURS and before in (".", "->", "::") and self.inside[i]:
            self._add("item", i, i, NEIGHBOURS[text])
        elif self.inside[i] and text in self.vocabulary.names and after not in ("*", "&", "<", ">") and not text.endswith("Ref"):
            for other in self.vocabulary.similar("names", text):
                self._add("similar", i, i, other)
        elif self.name.endswith(".mm") and self.inside[i] and self._is_selector(i, before, after):
            for other in self.vocabulary.similar("selectors", text, 1):
                self._add("similar", i, i, other)

    def _in_property(self, i):
        opens = self.parent[i]
        return opens is not None and self._text(opens - 1) == "@property"

    def _is_selector(self, i, before, after):
        opens = self.parent[i]
        if text_is_part := (opens is not None and self._text(opens) == "[" and before != "["):
            return text_is_part and (after in ("]", ":") and before not in ("::", ".", "->"))
        return before == "." and after != "(" and self._text(i) in self.vocabulary.selectors

    # -- lists

    def _list(self, open_):
        """Arguments swapped, an argument of Objective-C taken away, a property left out of braces."""
        close = self.match[open_]
        if not self.inside[open_] or open_ in self.bodies:
            return
        opener, before = self._text(open_), self._text(open_ - 1)
        if opener == "[":
            self._message(open_, close)
            return
        if before in HEADS or (opener == "(" and self.tokens[open_ - 1].kind != "name" and before not in (">", ")", "]")):
            return
        commas = [i for i in range(open_ + 1, close) if self._text(i) == "," and self.parent[i] == open_]
        edges = [open_, *commas, close]
        pieces = [(a + 1, b - 1) for a, b in zip(edges, edges[1:]) if b > a + 1]
        for one, two in zip(pieces, pieces[1:]):
            if self._text(one[0]) == "." or self._text(two[0]) == ".":
                continue
            first, second = (self.text[self.tokens[a].start:self.tokens[b].end] for a, b in (one, two))
            self._add("arguments", one[0], two[1], f"{second}, {first}")
        for index, (first, last) in enumerate(pieces):
            # What would be there anyway is no loss.
            default = self._text(last) in ("nullptr", "false", "0", "nil") and last == first + 3 or \
                self._text(last - 1) == "{" and self._text(last) == "}"
            if opener == "{" and self._text(first) == "." and self._text(first + 2) == "=" and not default:
                end = last + 1 if index + 1 < len(pieces) else last
                self._add("property", first, end, "")

    def _message(self, open_, close):
        colons = [i for i in range(open_ + 1, close) if self._text(i) == ":" and self.parent[i] == open_ and
                  self.tokens[i - 1].kind == "name"]
        if any(self._text(i) == "?" and self.parent[i] == open_ for i in range(open_ + 1, close)):
            return
        ends = [colon - 2 for colon in colons[1:]] + [close - 1]
        values = [(colon + 1, end) for colon, end in zip(colons, ends) if end > colon]
        for first, last in values:
            value = self.text[self.tokens[first].start:self.tokens[last].end]
            if value not in ("nil", "YES", "NO", "true", "false") and not re.fullmatch(r"-?[\d.]+", value):
                self._add("arguments", first, last, "nil")
        for one, two in zip(values, values[1:]):
            first, second = (self.text[self.tokens[a].start:self.tokens[b].end] for a, b in (one, two))
            between = self.text[self.tokens[one[1]].end:self.tokens[two[0]].start]
            self._add("arguments", one[0], two[1], f"{second}{between}{first}")
