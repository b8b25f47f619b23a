"""A browser uses the console of the real host as a person does. The tests themselves are in Tests/Node/browser."""

import os
import pathlib
import subprocess
import unittest

import node

LIMIT_SECONDS = 360


class Console(unittest.TestCase):
    def test_in_a_browser(self):
        folder = node.packages("Tests/Node/browser")
        files = sorted(path.name for path in pathlib.Path(folder).glob("*.test.mjs"))
        self.assertIn("shell.test.mjs", files)
        done = subprocess.run(["node", "--test", "--test-concurrency=2", *files], cwd=folder, timeout=LIMIT_SECONDS,
                              capture_output=True, text=True, env=os.environ | {"NO_PROXY": "*"})
        print(done.stdout[-2000:])
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == "__main__":
    unittest.main()
