"""Streams, exit statuses, and outputs that appear whole or not at all."""
import json
import os
import pathlib
import pty
import resource
import select
import signal
import subprocess
import tempfile
import time

import pytest


def test_help_and_version_are_results(tool):
    for arguments in (["--help"], ["info", "--help"], ["--version"]):
        result = tool.run(*arguments)
        assert result.returncode == 0 and result.stdout and not result.stderr


@pytest.mark.parametrize("arguments, words", [
    ([], "a command is required"), (["convert", "a", "b", "c", "-x", "--form"], "not expected: c -x --form"), (["inof"], 'did you mean "info"'), (["help"], 'no command "help"\nRun `gridwork --help`'), (["info"], "FILE"), (["info", "a.stl", "--wide"], "--wide"),
    (["merge", "a.stl", "b.stl", "-t", "-1"], "-t"), (["--color", "blue", "formats"], "blue")])
def test_wrong_calls_are_errors(tool, arguments, words):
    result = tool.run(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert words in result.stderr.decode()


def test_nothing_is_overwritten_unless_forced(tool):
    before = (tool.folder / "solid.obj").read_bytes()
    result = tool.run("convert", "solid.obj", "solid.obj")
    assert result.returncode == 2 and b"--force" in result.stderr
    assert (tool.folder / "solid.obj").read_bytes() == before
    os.chmod(tool.folder / "solid.obj", 0o640)
    assert tool.run("merge", "solid.obj", "solid.obj", "-f").returncode == 0
    assert os.stat(tool.folder / "solid.obj").st_mode & 0o777 == 0o640
    assert tool.files() == ["solid.obj"]


def test_links_are_followed(tool):
    os.symlink("target.stl", tool.folder / "link.stl")
    assert tool.run("convert", "solid.obj", "link.stl").returncode == 0
    assert os.path.islink(tool.folder / "link.stl") and (tool.folder / "target.stl").is_file()


def test_standard_output_takes_a_mesh_alone(tool):
    result = tool.run("merge", "solid.obj", "-", "--to", "stl")
    assert result.returncode == 0 and len(result.stdout) == 84 + 4 * 50
    assert b"merged nodes" in result.stderr


def test_standard_output_with_a_mesh_takes_no_objects(tool):
    for arguments in (["convert", "none.obj", "-", "--to", "stl"], ["metric", "none.obj", "-"],
                      ["split", "none.obj", "-", "--to", "medit", "--colors"]):
        result = tool.run("--json", *arguments)
        assert (result.returncode, result.stdout) == (2, b"") and b"No such file" in result.stderr
    assert tool.run("--json", "merge", "solid.obj", "-", "--to", "obj").stdout.startswith(b" v ")


@pytest.mark.parametrize("option", ["stl", "obj", "medit", "vtk", "nastran", "femap", "ensight"])
def test_a_full_device_is_noticed(tool, option):
    result = tool.run("convert", "solid.obj", "/dev/full", "--to", option)
    assert (result.returncode, result.stderr) == (2, b"gridwork: /dev/full: No space left on device\n")


def test_a_full_standard_output_is_noticed(tool):
    with open("/dev/full", "wb") as full:
        result = subprocess.run([tool.program, "formats"], stdout=full, stderr=subprocess.PIPE, timeout=60, check=False)
    assert result.returncode == 2 and b"No space left" in result.stderr


def test_a_file_that_grows_too_large_leaves_nothing(tool):
    result = tool.run("convert", "solid.obj", "out.vtk", preexec_fn=lambda: resource.setrlimit(
        resource.RLIMIT_FSIZE, (100, 100)))
    assert result.returncode != 0
    assert tool.files() == ["solid.obj"]


def test_a_folder_that_cannot_be_written_to(tool):
    if os.geteuid() == 0:
        pytest.skip("root may write everywhere")
    os.chmod(tool.folder, 0o500)
    result = tool.run("convert", "solid.obj", "out.stl")
    os.chmod(tool.folder, 0o700)
    assert (result.returncode, result.stderr) == (2, b"gridwork: out.stl: Permission denied\n")


def test_a_broken_pipe_is_silent(tool):
    reading, writing = os.pipe()
    os.close(reading)
    result = subprocess.run([tool.program, "formats"], stdout=writing, stderr=subprocess.PIPE, timeout=60, check=False)
    os.close(writing)
    assert result.returncode != 0 and result.stderr == b""


def test_a_signal_leaves_no_file(tool):
    os.mkfifo(tool.folder / "in.obj")
    with subprocess.Popen([tool.program, "convert", "in.obj", "out.stl"], cwd=tool.folder) as running:
        time.sleep(0.3)
        running.send_signal(signal.SIGINT)
        assert running.wait(60) == -signal.SIGINT
    assert tool.files() == ["in.obj", "solid.obj"]


def on_terminal(tool, *arguments, environment=None):
    outer, inner = pty.openpty()
    subprocess.run([tool.program, *arguments], cwd=tool.folder, stdout=inner, stderr=inner, timeout=60, check=False,
                   env={**os.environ, **(environment or {})})
    os.close(inner)
    text = os.read(outer, 65536)
    os.close(outer)
    return text


def test_colours_on_a_terminal_alone(tool):
    assert b"\033[1m" in on_terminal(tool, "info", "solid.obj", environment={"NO_COLOR": ""})
    assert b"\033" not in on_terminal(tool, "info", "solid.obj", environment={"NO_COLOR": "1"})
    assert b"\033" not in on_terminal(tool, "info", "solid.obj", "--color", "never")
    assert b"\033" not in tool.run("info", "solid.obj").stdout
    assert b"\033" in tool.run("info", "solid.obj", "--color", "always").stdout


def test_names_do_not_steer_the_terminal(tool):
    assert b"\033" not in tool.run("info", "\033[2Jx.stl").stderr


def test_names_that_are_no_utf8_come_back_from_json(tool):
    name = b"caf\xe9 \xc3\xa9\xf0\x9f\x90\x87\x07.obj"
    os.rename(tool.folder / "solid.obj", os.path.join(os.fsencode(tool.folder), name))
    result = tool.run("--json", "info", os.fsdecode(name))
    assert os.fsencode(json.loads(result.stdout.decode())["file"]) == name
    assert b"\\udce9" in result.stdout and b"\\u0007" in result.stdout
    assert "caf? é🐇?.obj" in tool.run("info", os.fsdecode(name)).stdout.decode()


def test_the_status_of_a_signal_is_seen_by_shells(tool):
    os.mkfifo(tool.folder / "in.obj")
    script = f"'{tool.program}' info in.obj & sleep 0.3; kill -TERM $!; wait $!; echo $?"
    assert subprocess.run(["sh", "-c", script], cwd=tool.folder, capture_output=True, timeout=60,
                          check=True).stdout.split()[-1:] == [b"143"]


def test_a_signal_removes_what_is_half_written(tool):
    lines = ["v 0 0 0", "v 1 0 0", "v 0 1 0"] + ["f 1 2 3"] * 1000000
    (tool.folder / "large.obj").write_text("\n".join(lines) + "\n")
    with subprocess.Popen([tool.program, "convert", "large.obj", "out.vtk"], cwd=tool.folder) as running:
        while running.poll() is None and not any(name.startswith(".gridwork") for name in tool.files()):
            time.sleep(0.001)
        running.send_signal(signal.SIGINT)
        assert running.wait(60) in (-signal.SIGINT, 0)
    assert [name for name in tool.files() if name.startswith(".gridwork")] == []
    assert running.returncode == 0 or "out.vtk" not in tool.files()


def test_progress_on_a_terminal_alone(tool):
    os.mkfifo(tool.folder / "in.obj")
    data = (tool.folder / "solid.obj").read_bytes()
    for options, wanted in (([], True), (["--quiet"], False)):
        outer, inner = pty.openpty()
        with subprocess.Popen([tool.program, *options, "info", "in.obj"], cwd=tool.folder, stdout=subprocess.DEVNULL,
                              stderr=inner) as running:
            with open(tool.folder / "in.obj", "wb") as slow:
                slow.write(data[:10])
                slow.flush()
                time.sleep(0.8)
                slow.write(data[10:])
            assert running.wait(60) == 0
        shown = b""
        while select.select([outer], [], [], 0.2)[0]:
            shown += os.read(outer, 65536)
        os.close(inner)
        os.close(outer)
        assert (b"reading in.obj ... 0." in shown) == wanted, shown


@pytest.fixture
def small_disk(tmp_path):
    """A file system of 64 KiB, where we may mount one."""
    folder = tmp_path / "small"
    folder.mkdir()
    if os.geteuid() != 0 or subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder],
                                           capture_output=True, check=False).returncode != 0:
        pytest.skip("no file system can be mounted")
    yield folder
    subprocess.run(["umount", folder], check=True)


def test_a_full_disk_leaves_what_was_there(tool, small_disk):
    (tool.folder / "large.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\n" + "f 1 2 3\n" * 20000)
    (small_disk / "out.vtk").write_text("before")
    for out in ("new.stl", "out.vtk", "part.case"):
        result = tool.run("convert", "large.obj", small_disk / out, "--force")
        assert result.returncode == 2 and b"No space left on device" in result.stderr
    assert [path.name for path in small_disk.iterdir()] == ["out.vtk"]
    assert (small_disk / "out.vtk").read_text() == "before"


def test_a_pipe_that_breaks_ends_the_writing(tool):
    (tool.folder / "large.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\n" + "f 1 2 3\n" * 200000)
    script = f"'{tool.program}' convert large.obj - --to vtk | head -c 10 > out"
    result = subprocess.run(["sh", "-c", script], cwd=tool.folder, capture_output=True, timeout=60, check=True)
    assert result.stderr == b"" and (tool.folder / "out").stat().st_size == 10


def test_folders_are_no_meshes(tool):
    (tool.folder / "folder.stl").mkdir()
    for arguments in (["info", "folder.stl"], ["convert", "solid.obj", "folder.stl", "-f"]):
        result = tool.run(*arguments)
        assert (result.returncode, result.stderr) == (2, b"gridwork: folder.stl: Is a directory\n")


@pytest.fixture
def as_nobody(tmp_path):
    """How to run without rights, in a folder that others may enter."""
    if os.geteuid() != 0:
        yield {}, tmp_path
        return
    with tempfile.TemporaryDirectory(dir="/tmp") as folder:
        os.chmod(folder, 0o755)
        yield {"user": 65534, "group": 65534}, pathlib.Path(folder)


def test_what_may_not_be_read_or_written_is_told(tool, as_nobody):
    rights, folder = as_nobody
    closed, source = folder / "closed", folder / "solid.obj"
    source.write_bytes((tool.folder / "solid.obj").read_bytes())
    closed.mkdir()
    (folder / "secret.obj").write_text("v 0 0 0\n")
    os.chmod(folder / "secret.obj", 0)
    os.chmod(closed, 0o555)
    try:
        if tool.run("--version", **rights).returncode != 0:
            pytest.skip("the program cannot be run without rights")
        for arguments, name in ((["info", folder / "secret.obj"], folder / "secret.obj"),
                                (["convert", source, closed / "out.stl"], closed / "out.stl")):
            result = tool.run(*arguments, **rights)
            assert (result.returncode, result.stderr.decode()) == (2, f"gridwork: {name}: Permission denied\n")
        assert not list(closed.iterdir())
    finally:
        os.chmod(closed, 0o755)


def test_options_stand_before_or_behind_the_command(tool):
    for arguments in (["--json", "info", "solid.obj"], ["info", "--json", "solid.obj"], ["info", "solid.obj", "--json"]):
        assert json.loads(tool.run(*arguments).stdout)["nodes"] == 4


def test_the_status_is_the_largest_of_all_files(tool):
    text = (tool.folder / "solid.obj").read_text()
    (tool.folder / "unused.obj").write_text(text + "v 5 5 5\n")
    for files, status in ((["solid.obj"], 0), (["unused.obj", "solid.obj"], 1), (["no.obj", "unused.obj", "solid.obj"], 2)):
        result = tool.run("--json", "check", *files)
        assert result.returncode == status
        assert [json.loads(line)["file"] for line in result.stdout.splitlines()] == files


def test_quiet_leaves_results_and_errors(tool):
    assert tool.run("merge", "-q", "solid.obj", "out.obj").stderr == b""
    assert b"exists" in tool.run("merge", "-q", "solid.obj", "out.obj").stderr
    assert tool.run("-q", "info", "solid.obj").stdout != b""


def test_a_file_that_comes_into_being_meanwhile_is_not_overwritten(tool):
    os.mkfifo(tool.folder / "in.obj")
    with subprocess.Popen([tool.program, "convert", "in.obj", "out.stl"], cwd=tool.folder, stderr=subprocess.PIPE) as running:
        with open(tool.folder / "in.obj", "wb") as slow:
            (tool.folder / "out.stl").write_text("theirs")
            slow.write((tool.folder / "solid.obj").read_bytes())
        words = running.stderr.read()
        assert running.wait(60) == 2 and b"exists" in words.lower()
    assert (tool.folder / "out.stl").read_text() == "theirs"
    assert tool.files() == ["in.obj", "out.stl", "solid.obj"]


def test_a_link_into_another_folder_is_written_there(tool):
    (tool.folder / "other").mkdir()
    os.symlink("other/target.obj", tool.folder / "link.obj")
    (tool.folder / "other" / "target.obj").write_text("before")
    assert tool.run("convert", "solid.obj", "link.obj").returncode == 2
    assert tool.run("convert", "solid.obj", "link.obj", "--force").returncode == 0
    assert os.path.islink(tool.folder / "link.obj")
    assert [path.name for path in (tool.folder / "other").iterdir()] == ["target.obj"]


def test_new_files_have_the_mode_of_the_mask(tool):
    tool.run("convert", "solid.obj", "out.stl", preexec_fn=lambda: os.umask(0o027))
    assert os.stat(tool.folder / "out.stl").st_mode & 0o777 == 0o640
