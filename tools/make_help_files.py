"""Manual pages and shell completion of a program, made from what its --help says, so that they cannot differ.

usage: make_help_files.py PROGRAM NAME SECTION VERSION OUT_FOLDER [INCLUDE_FOLDER]

PROGRAM is the built program, NAME how it is called once it is installed. OUT_FOLDER receives man/NAME.SECTION, a page
for each subcommand (man/NAME-COMMAND.SECTION), completion/NAME for bash and completion/_NAME for zsh. Texts that stand
in a manual page alone come from INCLUDE_FOLDER/NAME.h2m and INCLUDE_FOLDER/NAME-COMMAND.h2m, where they exist.
The pages are written by help2man, whose date is SOURCE_DATE_EPOCH where that is set.
"""
import pathlib
import re
import subprocess
import sys

OPTION = re.compile(r"^  (?P<names>-\S+)(?P<rest>.*)$")
COMMAND = re.compile(r"^  (?P<name>[a-z][a-z0-9-]*)(?:\s{2,}(?P<text>.*))?$")


def help_of(program, *words):
    return subprocess.run([program, *words, "--help"], check=True, capture_output=True, text=True,
                          env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}).stdout


def options_of(text):
    """(names, takes a value, description) of each option; a long one's description stands on the next line."""
    lines = text.splitlines()
    found = []
    for at, line in enumerate(lines):
        match = OPTION.match(line)
        if not match:
            continue
        value, _, description = match["rest"].partition("  ")
        following = lines[at + 1] if at + 1 < len(lines) else ""
        description = description.strip() or (following.strip() if following.startswith("      ") else "")
        found.append((match["names"].split(","), bool(value.strip()), description))
    return found


def commands_of(text):
    """(name, description) of each subcommand, in the order of the help."""
    _, _, listed = text.partition("\nSubcommands:\n")
    matches = (COMMAND.match(line) for line in listed.splitlines())
    return [(match["name"], match["text"] or "") for match in matches if match]


def manual_page(program, name, words, section, version, about, folder, includes):
    title = "-".join([name, *words])
    page = folder / f"{title}.{section}"
    extra = includes / f"{title}.h2m" if includes else None
    subprocess.run(["help2man", "--no-info", f"--section={section}", f"--version-string={version}",
                    f"--name={about[:1].lower() + about[1:]}", f"--source={name} {version}", f"--output={page}",
                    *([f"--include={extra}"] if extra and extra.exists() else []), " ".join([program, *words])],
                   check=True)
    text = page.read_text(encoding="utf-8")
    text = re.sub(r"^\.TH .*? (?=\"\d\w*\" )", f'.TH "{title.upper()}" ', text, count=1, flags=re.MULTILINE)
    text = re.sub(r"^\.SH NAME\n.*? \\- ", lambda _: f".SH NAME\n{title} \\- ", text, count=1, flags=re.MULTILINE)
    page.write_text(text.replace(program, name), encoding="utf-8")


def bash_completion(name, shared, commands):
    lines = [f"# Completion of {name} for bash.", f"_{name.replace('-', '_')}() {{",
             '  local word=${COMP_WORDS[COMP_CWORD]} command="" i options',
             "  for ((i = 1; i < COMP_CWORD; i++)); do", '    case ${COMP_WORDS[i]} in']
    if commands:
        lines.append(f"      {' | '.join(command for command, _, _ in commands)}) command=${{COMP_WORDS[i]}}; break ;;")
    lines += ["      *) ;;", "    esac", "  done", f'  options="{flags(shared)}"', "  case $command in"]
    for command, _, options in commands:
        lines.append(f'    {command}) options="$options {flags(options)}" ;;')
    listed = " ".join(command for command, _, _ in commands)
    lines += [f'    *) [[ $word == -* ]] || options="$options {listed}" ;;'.rstrip(), "  esac",
              '  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")',
              "  if [[ $word != -* && ( -n $command || %d -eq 0 ) ]]; then" % len(commands),
              '    mapfile -t COMPREPLY < <(compgen -f -- "$word")', "  fi", "}",
              f"complete -o filenames -F _{name.replace('-', '_')} {name}", ""]
    return "\n".join(lines)


def flags(options):
    return " ".join(option for names, _, _ in options for option in names)


def zsh_word(text):
    return re.sub(r"(['\[\]:])", r"\\\1", text).replace("\\'", "'\\''")


def zsh_arguments(options, rest):
    lines = []
    for names, has_value, text in options:
        for option in names:
            lines.append(f"    '{option}[{zsh_word(text)}]{':value:_files' if has_value else ''}'")
    return " \\\n".join(["  _arguments", *lines, f"    '{rest}'"])


def zsh_completion(name, shared, commands):
    lines = [f"#compdef {name}", f"# Completion of {name} for zsh."]
    if not commands:
        return "\n".join([*lines, zsh_arguments(shared, "*:file:_files"), ""])
    lines += ["local -a commands", "commands=("]
    lines += [f"  '{command}:{zsh_word(text)}'" for command, text, _ in commands]
    lines += [")", "local command word", "for word in ${words[2,CURRENT-1]}; do",
              f"  case $word in ({'|'.join(command for command, _, _ in commands)}) command=$word; break ;; esac",
              "done", "case $command in"]
    for command, _, options in commands:
        lines += [f"({command})", zsh_arguments([*options, *shared], "*:file:_files"), "  ;;"]
    lines += ["(*)", "  if [[ $PREFIX != -* ]]; then _describe command commands; return; fi",
              zsh_arguments(shared, "*: :"), "  ;;", "esac", ""]
    return "\n".join(lines)


def main():
    program, name, section, version, out = sys.argv[1:6]
    includes = pathlib.Path(sys.argv[6]) if len(sys.argv) > 6 else None
    out = pathlib.Path(out)
    (out / "man").mkdir(parents=True, exist_ok=True)
    (out / "completion").mkdir(parents=True, exist_ok=True)
    text = help_of(program)
    manual_page(program, name, [], section, version, text.splitlines()[0].rstrip("."), out / "man", includes)
    commands = []
    for command, about in commands_of(text):
        commands.append((command, about, options_of(help_of(program, command))))
        manual_page(program, name, [command], section, version, about, out / "man", includes)
    shared = options_of(text.partition("\nSubcommands:\n")[0])
    (out / "completion" / name).write_text(bash_completion(name, shared, commands), encoding="utf-8")
    (out / "completion" / f"_{name}").write_text(zsh_completion(name, shared, commands), encoding="utf-8")


if __name__ == "__main__":
    main()
