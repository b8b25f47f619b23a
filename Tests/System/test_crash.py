"""Changes that the host has confirmed as saved survive a kill at any moment. The full test is scripts/crash-test."""

import os
import tempfile
import time
import unittest

from crash import crash_rounds

ROUNDS = int(os.environ.get("ZU_CRASH_ROUNDS", "20"))


class Crash(unittest.TestCase):
    def test_nothing_durable_is_lost_by_a_kill(self):
        seed = int(os.environ.get("ZU_CRASH_SEED", time.time_ns()))
        print(f"seed {seed}", flush=True)
        with tempfile.TemporaryDirectory() as data:
            durable = crash_rounds(data, ROUNDS, seed, lambda text: print(text, flush=True))
        self.assertGreater(durable, ROUNDS)


if __name__ == "__main__":
    unittest.main()
