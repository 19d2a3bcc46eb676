# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""What nqp2 lets the worker do: the program, the worker beside it and real files."""

import json
import os
import shutil
import signal
import struct
import subprocess
import time
from pathlib import Path

from dv_stream import FRAME_SIZE, avi, dv_frame, wav
from program import PROGRAM, CardTest, command_line, main, read_until_end, run, sample, terminal

LARGE = 1 << 30  # bytes without content: long enough to be met in the middle


def files_below(folder):
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in Path(folder).rglob("*") if path.is_file()}


def workers_of(process):
    """The children of a process."""
    text = Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text()
    return [int(child) for child in text.split()]


def wait_for(condition):
    deadline = time.monotonic() + 60
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("nothing happened")
        time.sleep(0.005)


class WorkerTest(CardTest):
    def setUp(self):
        super().setUp()
        self.add_clip("0001AB")
        self.target = self.folder / "target"

    def add_clip(self, name, size=100_000, card=None, **fields):
        card = card or self.card
        card.add(name, audio=1, **fields)
        contents = card.path / "CONTENTS"
        for path, bytes_each in ((f"VIDEO/{name}.MXF", size), (f"AUDIO/{name}00.MXF", 5000)):
            file = contents / path
            file.parent.mkdir(exist_ok=True)
            file.write_bytes(b"")
            os.truncate(file, bytes_each)

    def start_import(self, **streams):
        """An import of a large clip that is under way."""
        self.add_clip("0009ZZ", LARGE)
        process = subprocess.Popen(
            command_line("import", self.card.path, "0009ZZ", "--to", self.target),
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL), **streams)
        self.addCleanup(process.kill)
        wait_for(lambda: list(self.target.rglob(".nqp2-*")))
        return process


class RoundTripTest(WorkerTest):
    def test_import_export_delete(self):
        self.add_clip("0002CD")
        before = files_below(self.card.path)
        shown = self.shown("import", "card", "0001AB", "0002CD", "--to", "target", cwd=self.folder)
        self.assertEqual(files_below(self.target), before)
        sizes = [sum(len(content) for name, content in before.items() if clip in name)
                 for clip in ("0001AB", "0002CD")]
        self.assertEqual(shown, f"0001AB: 3 files, {sizes[0]} bytes\n"
                                f"0002CD: 3 files, {sizes[1]} bytes\n")
        again, = self.told("import", self.card.path, "0001AB", "--to", self.target)["clips"]
        self.assertEqual((again["bytes"], again["written"], again["video"], again["audio"]),
                         (sizes[0], 0, 100_000, 5000))
        self.shown("ingest", "add", self.card.path, "0001AB", "0-9")
        self.shown("delete", self.card.path, "0001AB", "0002CD", "--yes")
        self.assertEqual(list(files_below(self.card.path)), ["USERDATA/Ingest.xml"])
        self.assertNotIn("0001AB", self.shown("ingest", "list", self.card.path, "--json"))
        exported = self.told("export", self.card.path, "0001AB", "0002CD", "--from", self.target)
        self.assertEqual(exported["clips"], [{"ClipName": "0001AB"}, {"ClipName": "0002CD"}])
        self.assertEqual({name: content for name, content in files_below(self.card.path).items()
                          if name in before}, before)

    def test_what_is_not_whole_is_refused_or_taken_and_told(self):
        video = self.card.path / "CONTENTS" / "VIDEO" / "0001AB.MXF"
        os.truncate(video, 0)
        arguments = ("import", self.card.path, "0001AB", "--to", self.target)
        self.assert_fails(run(*arguments), 1, f"nqp2: 0001AB: not imported ({video} is empty.)")
        self.assertFalse(self.target.exists())
        result = run(*arguments, "--incomplete", "--json")
        self.assertEqual((result.returncode, result.stderr),
                         (0, f"nqp2: 0001AB: not whole ({video} is empty.)\n"))
        self.assertTrue(json.loads(result.stdout)["clips"][0]["incomplete"])
        self.assertEqual(files_below(self.target), files_below(self.card.path))

    def test_drives_are_the_workers_too(self):
        self.shown("import", "--drive", "e=card", "--drive", "F=.", "E:", "0001AB", "--to", "F:\\here",
                cwd=self.folder)
        self.assertEqual(files_below(self.folder / "here"), files_below(self.card.path))

    def test_what_the_worker_does_is_done_to_the_card_that_a_folder_leads_to(self):
        card = self.card.path
        before = files_below(card)
        for command, *arguments in (("import", card / "CONTENTS" / "CLIP", "--to", self.target),
                                    ("delete", card / "CONTENTS", "--yes"),
                                    ("export", card / "CONTENTS", "--from", self.target / "CONTENTS")):
            result = run(command, arguments[0], "0001AB", *arguments[1:])
            self.assertEqual(result.returncode, 0)
            self.assertIn(f"nqp2: {arguments[0]}: took the card at {card}\n", result.stderr)
            self.assertEqual(len(files_below(card)), 0 if command == "delete" else len(before))
        self.assertEqual(files_below(card), before)

    def test_icon_of_a_bitmap_in_either_order_of_rows(self):
        rows = [bytes(range(row, row + 9)) for row in (0, 50, 100)]
        bottom_up = struct.pack("<2sIIIIiiHHIIIIII", b"BM", 90, 0, 54, 40, 3, 3, 1, 24, 0, 36, 2835,
                                2835, 0, 0) + b"".join(row + b"\0" * 3 for row in rows)
        top_down = (bottom_up[:22] + struct.pack("<i", -3) + bottom_up[26:54]
                    + b"".join(row + b"pad" for row in reversed(rows)))
        icon = self.card.path / "CONTENTS" / "ICON" / "0001AB.BMP"
        picture = self.folder / "picture.bmp"
        for content in (bottom_up, top_down):
            picture.write_bytes(content)
            self.shown("icon", self.card.path, "0001AB", picture)
            self.assertEqual(icon.read_bytes(), bottom_up)
        picture.write_bytes(bottom_up[:-8])
        self.assert_fails(run("icon", self.card.path, "0001AB", picture), 1,
                          f"nqp2: {picture}: ends within the picture")
        picture.write_bytes(bottom_up[:18] + struct.pack("<ii", 4096, 4096) + bottom_up[26:])
        self.assert_fails(run("icon", self.card.path, "0001AB", picture), 1,
                          f"nqp2: {picture}: is no bitmap file of 24 bits a pixel (sides up to 4096, "
                          "15 million pixels in all)")
        self.assertEqual(icon.read_bytes(), bottom_up)

    def test_icon_of_any_picture_and_of_the_clip_itself(self):
        self.card.add("0001AB")
        icon = self.card.path / "CONTENTS" / "ICON" / "0001AB.BMP"
        tall, wide = self.folder / "tall.png", self.folder / "wide.jpg"
        for path, size, colour in ((tall, "200x400", "red"), (wide, "1600x900", "blue")):
            subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"color={colour}:s={size}",
                            "-frames:v", "1", path], check=True)
        for path, size, pixel in ((tall, (30, 60), (0, 0, 255)), (wide, (80, 45), (255, 0, 0))):
            self.shown("icon", self.card.path, "0001AB", path)
            data = icon.read_bytes()
            self.assertEqual(struct.unpack_from("<ii", data, 18), size)
            for got, wanted in zip(data[54:57], pixel):
                self.assertAlmostEqual(got, wanted, delta=6)
        before, video = icon.read_bytes(), self.card.path / "CONTENTS" / "VIDEO" / "0001AB.MXF"
        for arguments, why in (
                (("0001AB",), f"{video}: no picture was made of it ("),  # by the clip's first frame
                (("NONE",), "NONE: has no video for an icon (give a picture)"),
                (("0001AB", self.folder), f"{self.folder}: is no file ("),
                (("0001AB", __file__), f"{__file__}: no picture was made of it (")):
            result = run("icon", self.card.path, *arguments)
            self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1))
            self.assertTrue(result.stderr.startswith("nqp2: " + why), result.stderr)
        self.assertEqual(icon.read_bytes(), before)


class FailureTest(WorkerTest):
    def test_what_the_worker_refuses_is_its_sentence_and_status_1(self):
        other = self.target / "CONTENTS" / "VIDEO" / "0001AB.MXF"
        other.parent.mkdir(parents=True)
        other.write_bytes(b"other")
        contents = self.card.path / "CONTENTS"
        cases = (
            (["import", self.card.path, "0001AB", "--to", self.target],
             f"0001AB: not imported ({other} is there already with other content.)"),
            (["delete", self.card.path, "NONE", "--yes"],
             f"NONE: not deleted (There is no clip NONE in {contents}.)"),
            (["serial", "/proc"],
             "/proc: no serial number (The file system of /proc stands on no device of its own.)"),
        )
        self.assert_each_fails(1, [(arguments, f"{line}\n") for arguments, line in cases])
        self.assertEqual(files_below(self.target), {"CONTENTS/VIDEO/0001AB.MXF": b"other"})

    def test_a_worker_that_does_not_start_is_status_3(self):
        for program, reason in (("/no/worker", "/no/worker: No such file or directory"),
                                ("/bin/true", "/bin/true: ended before it listened")):
            self.assert_each_fails(3, [
                ([*arguments, "--worker", program], f"the worker: does not start ({reason})\n")
                for arguments in (["import", self.card.path, "0001AB", "--to", self.target],
                                  ["delete", self.card.path, "NONE", "--yes"], ["last-error"])])
        self.assertTrue((self.card.path / "CONTENTS" / "CLIP" / "0001AB.XML").exists())
        self.assertFalse(self.target.exists())
        self.assertEqual(run("last-error").stderr, "a fresh worker answers and knows of no failure\n")
        self.assertEqual(self.told("last-error"), {"LastError": ""})

    def test_a_killed_worker_and_ctrl_c_leave_no_file_with_a_name(self):
        for number, status, told, names in (
                (signal.SIGKILL, 3, "the worker has ended or does not answer", {".nqp2-"}),
                (signal.SIGINT, 1, "Cancelled.", set()), (signal.SIGTERM, 1, "Cancelled.", set())):
            self.target = self.folder / str(number)
            process = self.start_import(stderr=subprocess.PIPE)
            worker, = workers_of(process)
            os.kill(worker if number == signal.SIGKILL else process.pid, number)
            _, line = process.communicate(timeout=60)
            self.assertEqual((process.returncode, line.decode()),
                             (status, f"nqp2: 0009ZZ: not imported ({told})\n"))
            self.assertFalse(Path(f"/proc/{worker}").exists(), "the worker has ended too")
            left = {path.name[:6] for path in self.target.rglob("*") if path.is_file()}
            self.assertLessEqual(left, names)

    def test_ctrl_c_ends_the_program_whatever_the_worker_does(self):
        for signals in ((signal.SIGINT,), (signal.SIGTERM, signal.SIGINT)):
            process = self.start_import(stderr=subprocess.DEVNULL)
            worker, = workers_of(process)
            os.kill(worker, signal.SIGSTOP)
            for number in signals:
                process.send_signal(number)
                time.sleep(0.2)
            # By itself after five seconds, at once by the second.
            self.assertEqual(process.wait(timeout=30 if len(signals) == 1 else 2), -signal.SIGINT)
            os.kill(worker, signal.SIGCONT)
            wait_for(lambda: not Path(f"/proc/{worker}").exists())
            self.assertEqual(files_below(self.target), {})

    def test_the_bar_stands_on_a_terminal_and_is_cleared(self):
        with terminal(60) as (master, slave):
            process = self.start_import(stderr=slave)
            shown = b""
            while b"left" not in shown:
                shown += os.read(master, 4096)
            process.send_signal(signal.SIGINT)
            shown += read_until_end(master, process)
        draws = shown.decode().split("\r\x1b[K")
        self.assertRegex(draws[1], r"^import 0009ZZ \[ +\]   0 %$")
        self.assertRegex(draws[-2], r"^import 0009ZZ (\[=* *\])? +\d+ %  [\d.]+ [KM]iB/s  \d+:\d\d left$")
        self.assertEqual(draws[-1], "nqp2: 0009ZZ: not imported (Cancelled.)\r\n")
        self.assertLess(max(map(len, draws[1:-1])), 60)


class CameraTest(CardTest):
    def test_camera_files_are_described(self):
        file = self.folder / "camera" / "SONY" / "DVF" / "100DVF" / "DV000001.AVI"
        file.parent.mkdir(parents=True)
        file.write_bytes(avi([dv_frame(number) for number in range(5)]))
        info = self.told("base-info", file)
        self.assertRegex(info.pop("GlobalClipGuid"), "^[0-9a-f-]{36}$")
        self.assertEqual(info, {
            "ClipName": "DV000001", "UserClipName": "DV000001", "StartDate": "", "FrameRate": "50i",
            "FramesPerSecond": 25.0, "Duration": 5, "StartTimecode": 0, "CodecName": "DVSD",
            "AspectRatio": "4:3", "ActivePixel": 720, "ActiveLine": 576, "VideoPath": str(file),
            "AudioPath": []})
        clip, = self.told("clips", "camera", cwd=self.folder)["clips"]
        self.assertEqual((clip["ClipName"], clip["CodecName"], clip["Duration"], clip["VideoPath"]),
                         ("DV000001", "DV25_420", 5, str(file)))
        clip, = self.told("clips", "camera", "--metadata", cwd=self.folder)["clips"]
        self.assertEqual([(track["codec"], track["format"]) for track in clip["metadata"]["tracks"]],
                         [("DV", "720x576 50i")])
        self.assertIn({"path": "Duration", "text": "0.200000"}, clip["metadata"]["others"])
        page = run("report", self.folder / "camera", "-o", "-").stdout
        self.assertIn("DV 720x576 50i", page)
        found = [(clip["ClipName"], clip["FrameRate"], clip["Duration"], clip["ActivePixel"],
                  sum(map(bool, clip["AudioPath"])))
                 for clip in self.told("clips", sample("camera"))["clips"]]
        self.assertEqual(found, [("DV000001", "50i", 25, 720, 2),
                                 ("P1000001", "25p", 50, 1920, 2),
                                 ("P1000002", "59.94p", 90, 1280, 2)])
        without = run("clips", self.folder / "camera", "--worker", "/no/worker", "--strict")
        self.assertEqual((without.returncode, without.stderr.splitlines()[0]), (
            4, "nqp2: the worker: does not start (/no/worker: No such file or directory)"))

    def test_a_worker_whose_module_cannot_be_used_says_so_and_goes_on(self):
        folder = Path(PROGRAM).parent
        worker = shutil.copy(folder / "nqp2-worker", self.folder)
        module = self.folder / "nqp2-media.so"
        whole = (folder / module.name).read_bytes()
        version = run("--version").stdout.split()[-1].encode() + b"\0"
        self.assertIn(version, whole)
        file = self.folder / "camera.avi"
        file.write_bytes(avi([dv_frame(0)]))
        ask = command_line("base-info", file, "--worker", worker)
        told = ("^nqp2: .*: not described \\(Camera files and recordings need a part of the worker "
                "that cannot be used: .*")
        for content, words in [
                (None, "No such file"), (b"", "file too short"), (whole[:-1], "is cut off"),
                (whole[:4096], "is cut off"), (b"\0" * len(whole), "invalid ELF header"),
                (whole.replace(b"Nqp2MediaModule", b"Nqp2OtherModule"), "undefined symbol"),
                (whole.replace(version, b"0" * len(version[1:]) + b"\0"), "of another version"),
                (whole, "Too many open files"), (whole, "")]:
            if content is not None:
                module.write_bytes(content)
            # Enough to serve a session, too few to load the module's libraries in safety.
            few = ["prlimit", "--nofile=24"] if words.startswith("Too many") else []
            with self.subTest(words):
                result = subprocess.run([*few, *ask], capture_output=True, text=True, check=False)
                self.assertEqual(result.returncode, 1 if words else 0, result.stderr)
                self.assertRegex(result.stderr, told + words if words else "^$")
        module.unlink()
        os.mkfifo(module)
        result = subprocess.run(ask, capture_output=True, text=True, check=False, timeout=30)
        self.assertRegex(result.stderr, told + "is no file")
        self.assertEqual(run("serial", "/proc", "--worker", worker).returncode, 1)


class RecordingTest(CardTest):
    def setUp(self):
        super().setUp()
        self.stream = self.folder / "tape.dv"
        self.stream.write_bytes(b"".join(map(dv_frame, range(5))))
        self.sound = self.folder / "tape.wav"

    def record(self, *arguments, code_type="CT_DV25_50I"):
        return run("rt-export", self.card.path, self.stream, "--code-type", code_type, *arguments)

    def assert_recorded(self, **fields):
        """The card holds one clip, which has these fields."""
        clip, = self.told("clips", self.card.path)["clips"]
        self.assertEqual({key: clip[key] for key in fields}, fields)

    def test_a_stream_becomes_a_clip(self):
        self.sound.write_bytes(wav(48000))
        result = self.record("--sound", self.sound, "--name", "0001AB", "--title", "Live",
                             "--timecode", "90000")
        self.assertEqual((result.stdout, result.stderr), ("0001AB: 5 frames recorded\n", ""))
        self.assert_recorded(ClipName="0001AB", UserClipName="Live", CodecName="DV25_420",
                             Duration=5, StartTimecode=90000, AspectRatio="4:3")
        files = files_below(self.card.path)
        self.assertEqual(files["CONTENTS/VIDEO/0001AB.MXF"].count(dv_frame(3)), 1)
        # A fifth of a second, however long the file goes on.
        self.assertIn(b"\3\4" * 9600, files["CONTENTS/AUDIO/0001AB01.MXF"])
        self.assertNotIn(b"\3\4" * 9601, files["CONTENTS/AUDIO/0001AB01.MXF"])

    def test_bare_samples_and_a_free_name(self):
        (self.card.path / "CONTENTS" / "VIDEO").mkdir()
        self.sound.write_bytes(b"\1\2\3" * 1000)
        told = json.loads(self.record("--sound", self.sound, "--bare", "--channels", 1, "--bits",
                                      24, "--json").stdout)
        name = told["ClipName"]
        self.assertEqual((len(name), told["frames"]), (6, 5))
        files = files_below(self.card.path)
        self.assertIn(b"\1\2\3" * 1000 + b"\0" * 3, files[f"CONTENTS/AUDIO/{name}00.MXF"])

    def test_what_is_refused_leaves_nothing(self):
        self.sound.write_bytes(wav(48000)[:30])
        cases = (
            ({"code_type": "CT_DV50_50I"}, [], 1,
             f"{self.stream}: not recorded (This is no frame of DV50_422 at 50i: it says that it "
             "is of another raster or class.)"),
            ({"code_type": "99"}, [], 1, "code type 99: cannot be recorded (it has no name)"),
            ({}, ["--sound", self.folder / "none"], 1,
             f"{self.folder}/none: cannot be opened (No such file or directory)"),
            ({}, ["--name", "what?"], 1, f"{self.stream}: not recorded (\"what?\" is no name that "
                                         "a card can hold.)"),
            ({}, ["--channels", "2"], 2,
             "record usage: --channels requires --bare (see nqp2 record --help)"),
        )
        os.truncate(self.stream, 3 * FRAME_SIZE)
        for options, arguments, status, line in cases:
            self.assert_fails(self.record(*arguments, **options), status, f"nqp2: {line}")
        self.assertEqual(files_below(self.card.path), {})

    def test_what_came_before_a_wrong_frame_is_kept(self):
        for frames in (1, 3, 30):
            good = b"".join(map(dv_frame, range(frames)))
            self.stream.write_bytes(good + bytes(FRAME_SIZE) + dv_frame(0))
            self.assertIn(f"{self.stream}: only {frames} frames recorded (This is no frame of",
                          self.record("--name", "0001AB").stderr)
            self.assert_recorded(Duration=frames)
            self.assertIn(good, files_below(self.card.path)["CONTENTS/VIDEO/0001AB.MXF"])
            run("delete", self.card.path, "0001AB", "--yes")

    def test_names_of_recordings_are_claimed_in_any_letters(self):
        live = self.folder / "live"
        os.mkfifo(live)
        process = subprocess.Popen(
            command_line("rt-export", self.card.path, live, "--code-type", "CT_DV25_50I", "--name",
                         "0001aa"), stdout=subprocess.PIPE)
        self.addCleanup(process.kill)
        with open(live, "wb", buffering=0) as stream:
            stream.write(dv_frame(0))
            wait_for(lambda: list(self.card.path.rglob("VIDEO/.nqp2-*")))
            self.assertIn("already", self.record("--name", "0001AA").stderr)
            self.assertEqual(self.record().stdout, "0002AA: 5 frames recorded\n")
        self.assertEqual(process.communicate(timeout=60)[0], b"0001aa: 1 frames recorded\n")

    def test_aiff_sound(self):
        aiff = (b"AIFFCOMM" + struct.pack(">IhIh", 18, 2, 1000, 24) + bytes.fromhex(
            "400ebb80000000000000") + b"SSND" + struct.pack(">III", 6008, 0, 0) + b"\1\2\3" * 2000)
        self.sound.write_bytes(b"FORM" + struct.pack(">I", len(aiff)) + aiff)
        self.assertEqual(self.record("--sound", self.sound, "--name", "0001AB").stderr, "")
        self.assertIn(b"\3\2\1" * 1000 + b"\0" * 3,
                      files_below(self.card.path)["CONTENTS/AUDIO/0001AB00.MXF"])

    def test_sound_is_what_a_sound_file_says_and_nothing_else(self):
        eight_bits = bytearray(wav(100))
        eight_bits[eight_bits.index(b"fmt ") + 22] = 8
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        self.assertIn(f"{pipe}: is no file (", self.record("--sound", pipe).stderr)
        for content, problem in ((b"A text, and no sound.\n" * 100, "is no sound file"),
                                 (wav(48000)[:30], "is no sound file"),
                                 (eight_bits, "is no PCM sound of 16 or 24 bits")):
            self.sound.write_bytes(content)
            result = self.record("--sound", self.sound)
            self.assertEqual((result.returncode, result.stdout), (1, ""))
            self.assertTrue(result.stderr.startswith(f"nqp2: {self.sound}: {problem} ("))
        self.assertEqual(files_below(self.card.path), {})


if __name__ == "__main__":
    main()
