"""What Doxygen reads in place of a header: its plain comments, marked as documentation.

usage: doxygen_filter.py HEADER

- The comment at the top of the file tells about the file and about the class that carries its name.
- A comment before a declaration documents it; standing before several without an empty line between, all of them.
- A comment behind a declaration on its line documents that one.
"""
import pathlib
import re
import sys

COMMENT = re.compile(r"^(\s*)//( |$)(.*)$")
BEHIND = re.compile(r"^(\s*[^/\s][^\"]*?[;,{}]?) +// (.*)$")
ENDS_GROUP = re.compile(r"^\s*(};?|public:|protected:|private:|#.*)?\s*$")


def marked(line):
    match = COMMENT.match(line)
    if match:
        return f"{match[1]}///{match[2]}{match[3]}"
    match = BEHIND.match(line)
    return f"{match[1]}  ///< {match[2]}" if match else line


def head_of(lines):
    head = []
    for line in lines:
        if not line.startswith("//"):
            break
        head.append(line[2:].strip())
    return head


def grouped(lines):
    """Encloses each comment that stands before several declarations, and those, in a group."""
    result, at = [], 0
    while at < len(lines):
        if not COMMENT.match(lines[at]):
            result.append(lines[at])
            at += 1
            continue
        begin = at
        while at < len(lines) and COMMENT.match(lines[at]):
            at += 1
        code = at
        while at < len(lines) and not ENDS_GROUP.match(lines[at]) and not COMMENT.match(lines[at]):
            if re.search(r"\b(class|struct|enum|namespace)\b[^;]*\{\s*(//.*)?$", lines[at]):
                break
            at += 1
        several = sum(line.split("//")[0].rstrip().endswith((";", "}")) for line in lines[code:at]) > 1
        indent = re.match(r"\s*", lines[begin])[0]
        result += [f"{indent}///@{{"] * several + lines[begin:at] + [f"{indent}///@}}"] * several
    return result


def main():
    path = pathlib.Path(sys.argv[1])
    lines = path.read_text(encoding="utf-8").splitlines()
    head = head_of(lines)
    lines = lines[len(head):]
    own = re.compile(rf"^(template\b.*)?(class|struct)\s+(VOMSG_API\s+)?{re.escape(path.stem)}\b[^;]*$")
    out = [f"/// \\file\n/// {' '.join(head)}"] if head else []
    for at, line in enumerate(lines):
        before = lines[at - 1] if at else ""
        if head and own.match(line) and not COMMENT.match(before) and not before.startswith("template"):
            out += [f"// {text}" for text in head]
        out.append(line)
    print("\n".join(marked(line) for line in grouped(out)))


if __name__ == "__main__":
    main()
