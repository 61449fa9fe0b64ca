"""Runs the example programs on the dance of the sample scene: 75 nodes, 81 samples at 24 a second.

    play_test.py PLAY PLAY_C FILE.tv2
"""
import re
import subprocess
import sys
import unittest

PLAY, PLAY_C, SCENE = sys.argv[1:]


def output(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    return done.returncode, done.stdout, done.stderr


class Examples(unittest.TestCase):
    def test_a_crowd_moves_alike_on_any_number_of_threads(self):
        checksums = set()
        for threads in ("1", "3", "50"):
            status, text, _ = output(PLAY, SCENE, "40", "20", threads)
            self.assertEqual(status, 0)
            self.assertIn(f"75 nodes, 40 characters, 20 frames, {threads} threads\n", text)
            checksums.add(re.search(r"checksum (\w+)", text).group(1))
        self.assertEqual(len(checksums), 1)
        self.assertNotIn(re.search(r"checksum (\w+)", output(PLAY, SCENE, "40", "21", "1")[1]).group(1), checksums)

    def test_the_player_in_c_goes_through_the_take(self):
        status, text, _ = output(PLAY_C, SCENE, "Head")
        self.assertEqual(status, 0)
        lines = text.splitlines()
        self.assertRegex(lines[0], r"^75 nodes, \d+ bytes$")
        times = [line.split(":")[0] for line in lines[1:]]
        self.assertEqual(times, [f"{tenth / 10:.2f} s" for tenth in range(34)])  # 80 / 24 s
        self.assertGreater(len({line.split(":")[1] for line in lines[1:]}), 5)  # the head moves

    def test_failures_have_a_reason_and_a_code(self):
        for program in (PLAY, PLAY_C):
            self.assertEqual(output(program)[0], 2)
            status, _, said = output(program, "none.tv2")
            self.assertEqual(status, 1)
            self.assertRegex(said, r"^none\.tv2: \w+")
        self.assertEqual(output(PLAY_C, SCENE, "Nobody")[0], 1)


unittest.main(argv=sys.argv[:1])
