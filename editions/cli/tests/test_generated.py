"""The man page and the completions, which come from the tool itself."""
import os
import pathlib
import pty
import select
import shutil
import subprocess

import pytest

COMMANDS = "info check convert merge quality boundary transform clip split metric formats".split()


def generated(tool, what):
    return tool.run("--generate", what).stdout.decode()


def needs(program):
    return pytest.mark.skipif(shutil.which(program) is None, reason=f"{program} is not installed")


@pytest.mark.parametrize("what", ["man", "bash", "zsh", "fish"])
def test_what_is_installed_is_what_the_tool_prints(tool, what):
    folder = os.environ.get("GRIDWORK_GENERATED")
    if folder is None:
        pytest.skip("GRIDWORK_GENERATED does not name the folder of the build")
    text = pathlib.Path(folder, what).read_text()
    assert text == generated(tool, what)
    assert all(command in text for command in COMMANDS)


@needs("groff")
def test_groff_has_nothing_to_say_about_the_man_page(tool):
    result = subprocess.run(["groff", "-ww", "-man", "-Tutf8"], input=generated(tool, "man").encode(),
                            capture_output=True, timeout=60, check=True)
    assert result.stderr == b"" and b"User Commands" in result.stdout


@needs("mandoc")
def test_mandoc_misses_the_date_alone(tool):
    result = subprocess.run(["mandoc", "-Tlint"], input=generated(tool, "man").encode(), capture_output=True,
                            timeout=60, check=False)
    assert [line for line in result.stdout.splitlines() if b"missing date" not in line] == []


COMPLETED = [("", set(COMMANDS)), ("mer", {"merge"}), ("merge --mo", {"--mode"}), ("merge --mode ", {"0", "1", "2"}),
             ("convert --to e", {"ensight"}), ("info so", {"solid.obj"})]


@needs("bash")
@pytest.mark.parametrize("words, wanted", COMPLETED)
def test_bash_completes(tool, words, wanted):
    (tool.folder / "gridwork.bash").write_text(generated(tool, "bash"))
    script = f"compopt() {{ :; }}; . ./gridwork.bash; IFS=' '; text='gridwork {words}'; COMP_WORDS=($text)\n" \
             "[[ $text == *' ' ]] && COMP_WORDS+=(''); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _gridwork\n" \
             "printf '%s\\n' \"${COMPREPLY[@]}\""
    result = subprocess.run(["bash", "--norc", "-c", script], cwd=tool.folder, capture_output=True, timeout=60, check=True)
    found = set(result.stdout.decode().split())
    assert result.stderr == b"" and wanted <= found
    assert words == "" or wanted == found


@needs("fish")
@pytest.mark.parametrize("words, wanted", COMPLETED)
def test_fish_completes(tool, words, wanted):
    (tool.folder / "gridwork.fish").write_text(generated(tool, "fish"))
    script = f"source gridwork.fish; complete -C 'gridwork {words}'"
    result = subprocess.run(["fish", "--no-config", "-c", script], cwd=tool.folder, capture_output=True, timeout=60,
                            check=True, env={**os.environ, "HOME": str(tool.folder)})
    found = {line.split("\t")[0] for line in result.stdout.decode().splitlines()}
    assert result.stderr == b"" and wanted <= found


def talk_to(program, folder, lines):
    """Types lines, which may end in a tabulator, at a terminal, and waits for what has to come after each."""
    child, terminal = pty.fork()
    if child == 0:
        os.chdir(folder)
        os.execvpe(program[0], program, {**os.environ, "TERM": "dumb", "PS1": "> ", "HOME": str(folder)})
    try:
        for line, awaited in lines:
            os.write(terminal, line.encode())
            shown = ""
            while awaited not in shown:
                assert select.select([terminal], [], [], 20)[0], (line, shown)
                shown += os.read(terminal, 65536).decode(errors="replace")
            os.write(terminal, b"\x15")
    finally:
        os.close(terminal)
        os.waitpid(child, 0)


@needs("zsh")
def test_zsh_completes(tool):
    (tool.folder / "_gridwork").write_text(generated(tool, "zsh"))
    start = "fpath=($PWD $fpath); autoload -Uz compinit; compinit -u -D; setopt no_beep; echo rea''dy\n"
    talk_to(["zsh", "-f", "-i"], tool.folder, [
        (start, "ready"), ("gridwork \t\t", "merge"), ("gridwork qu\t", "quality"), ("gridwork merge --mod\t", "mode"),
        ("gridwork info so\t", "solid.obj")])
