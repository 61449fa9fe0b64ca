"""Loading: what is read, and what goes wrong."""

import unittest

import tev2


class Load(unittest.TestCase):
    def test_refuses_what_is_no_scene(self):
        with self.assertRaises(tev2.LoadError) as caught:
            tev2.loads(b"no scene")
        self.assertEqual(caught.exception.code, "bad-magic")


if __name__ == "__main__":
    unittest.main()
