"""The session of the page on REST, run line by line: each command prints the lines that the page shows."""

import unittest

from pages import expect, session, session_host


class RestSession(unittest.TestCase):
    def test_the_session_of_the_page(self):
        arguments, steps = session("docs/rest.md", "A session")
        self.assertGreaterEqual(len(steps), 30)
        with session_host(arguments, {"ModbusTcp": "1502", "AsciiTcp": "5025"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), [as_here(line) for line in shown])


if __name__ == "__main__":
    unittest.main()
