"""Output maps with numeric ids, each in a protocol of its own, changed and read back over REST."""

import time
import unittest

from host import BIN, Host, wait_until
from rest import RestClient

NUMERIC = "/controls/TestNumeric"
REGISTER = "/controls/TestRegister"
OVERLAP = "Unable to add connection source {}. The specified address would cause the selected source to overlap addresses used by " \
          "an existing connection."
PARTLY = "One or more data sources could not be added to output map."


class Maps(unittest.TestCase):
    """Each test has a host of its own, and calls commands of the one protocol that it looks at."""

    protocol = NUMERIC

    def setUp(self):
        self.host = Host("--plugins", BIN / "tests/numericmaps", "--enable", "TestNumeric", "--enable", "TestRegister", "--start",
                         modbus=False)
        self.host.__enter__()
        self.addCleanup(self.host.__exit__, None)
        self.rest = RestClient(self.host.http_port)
        self.addCleanup(self.rest.__exit__)

    def call(self, command, arguments=None):
        return self.rest.post(f"{self.protocol}/outputs/commands/{command}", arguments or {})

    def done(self, command, arguments=None):
        answer = self.call(command, arguments)
        self.assertEqual(answer.status, 204, answer.text)

    def refused(self, status, code, command, arguments):
        """Expects a refusal with these two values and an unchanged map. Returns the causes."""
        before = self.map()
        answer = self.call(command, arguments)
        self.assertEqual((answer.status, answer.json["code"], answer.json["detail"]),
                         (status, code, "Output connection map action error"))
        self.assertEqual(self.map(), before)
        return answer.json.get("causes", [])

    def document(self):
        return self.rest.get(self.protocol + "/outputs").json

    def map(self):
        return self.document()["map"]

    def ids(self):
        return [item["outputId"] for item in self.map()]

    def clear(self):
        self.done("removeAll")
        self.assertEqual(self.map(), [])

    def sent(self):
        """The values that the protocol would send, by output id."""
        words = self.rest.get(self.protocol + "/metrics").json["sent"].split()
        return {int(word.split("=")[0]): float(word.split("=")[1]) for word in words}


class Numbers(Maps):
    def add(self, output_id, source, shift=False):
        return {"outputId": output_id, "source": source, "autoShift": shift}

    def fill(self, *ids):
        for output_id in ids:
            self.done("add", self.add(output_id, f"source {output_id}"))

    def test_the_range_is_told_and_not_enforced(self):
        self.assertEqual(self.document()["attributes"], {"outputIdMin": 0, "outputIdMax": 200})
        self.done("add", self.add(60000, "far away"))
        self.assertEqual(self.ids(), [60000])

    def test_a_list_is_numbered_from_the_start_and_behind_the_last(self):
        self.done("addAll", {"map": [{"source": "a"}, {"source": "b", "outputId": 77}]})
        self.assertEqual(self.map(), [{"outputId": 0, "source": "a"}, {"outputId": 1, "source": "b"}])
        self.done("add", self.add(7, "c"))
        self.done("addAll", {"map": [{"source": "d"}]})
        self.assertEqual(self.ids(), [0, 1, 7, 8])

    def test_what_can_be_added_of_a_list_is_added(self):
        self.done("add", self.add(0, "there"))
        self.done("addAll", {"map": [{"source": "a"}, {"source": "there"}, {"source": ""}, {"source": "b"}]})
        self.assertEqual([(item["outputId"], item["source"]) for item in self.map()], [(0, "there"), (1, "a"), (2, "b")])
        self.host.wait_for_log(PARTLY)

    def test_a_list_that_does_not_fit_goes_in_as_far_as_it_does(self):
        self.done("addAll", {"map": [{"source": f"s{number}"} for number in range(12)]})
        self.assertEqual(self.ids(), list(range(8)))
        self.refused(409, -977, "add", self.add(100, "one more"))

    def test_a_list_ends_at_the_last_number(self):
        self.done("add", self.add(65533, "near the end"))
        self.done("addAll", {"map": [{"source": "a"}, {"source": "b"}, {"source": "c"}]})
        self.assertEqual(self.ids(), [65533, 65534])
        self.host.wait_for_log("Data source b in the list of sources to add has invalid output identifier (65535).")

    def test_an_insertion_pushes_the_run_behind_it(self):
        self.fill(1, 2, 3, 4, 7)
        self.refused(422, -997, "add", self.add(3, "new"))
        self.done("add", self.add(3, "new", shift=True))
        self.assertEqual([(item["outputId"], item["source"]) for item in self.map()],
                         [(1, "source 1"), (2, "source 2"), (3, "new"), (4, "source 3"), (5, "source 4"), (7, "source 7")])

    def test_an_addition_that_is_refused_changes_nothing(self):
        self.fill(5)
        self.done("add", self.add(5, "source 5"))  # adding a present item is no fault
        self.refused(409, -987, "add", self.add(6, "source 5"))
        self.refused(422, -997, "add", {"source": "without a number"})
        self.refused(422, -997, "add", {"outputId": 6})
        self.refused(404, -999, "remove", {"outputId": 6})
        self.refused(422, -997, "remove", {})

    def test_ids_move_and_gaps_close(self):
        self.fill(5, 6, 9)
        self.done("updateId", {"map": [{"outputId": 9}, {"outputId": 5}], "autoShift": True})
        self.assertEqual([(item["outputId"], item["source"]) for item in self.map()],
                         [(5, "source 9"), (6, "source 5"), (7, "source 6")])
        self.done("updateId", {"map": [{"outputId": 7}, {"outputId": 50}]})
        self.assertEqual(self.ids(), [5, 6, 50])
        self.refused(404, -999, "updateId", {"map": [{"outputId": 8}, {"outputId": 51}]})
        self.assertEqual(self.refused(422, -997, "updateId", {"map": [{"outputId": 8}]}), [
            "There should be exactly 2 output id entries but there are 1. The first output id should contain the original id to "
            "change from and the second output id should contain the new id to change to."])
        self.done("updateId", {"map": [{"outputId": 99}, {"outputId": 99}]})  # equal ids: nothing to do, whether or not the item exists
        self.done("compactId")
        self.assertEqual(self.ids(), [0, 1, 2])
        self.clear()
        self.done("compactId")
        self.assertEqual(self.ids(), [])

    def test_results_follow_the_map_within_a_second(self):
        self.done("addAll", {"map": [{"source": "profile/zMax"}, {"source": "profile/width"}]})
        began = time.monotonic()
        wait_until(lambda: self.sent().get(1) in (60, 20), "results under their numbers")
        self.done("updateId", {"map": [{"outputId": 1}, {"outputId": 40}]})
        wait_until(lambda: set(self.sent()) == {0, 40}, "results under the new number")
        self.assertLess(time.monotonic() - began, 5)  # the metrics are refreshed once a second


class Registers(Maps):
    protocol = REGISTER

    def add(self, address, size, shift=False, source=None):
        return {"outputId": address, "outputSize": size, "source": source or f"source {address}", "autoShift": shift}

    def fill(self, *items):
        self.clear()
        for address, size in items:
            self.done("add", self.add(address, size))

    def test_the_range_is_told_and_held(self):
        self.assertEqual(self.document()["attributes"], {"start": 100, "count": 50, "itemSize": 2})
        self.done("add", self.add(100, 3))
        for address in (99, 150):
            self.assertEqual(self.refused(422, -997, "add", self.add(address, 4)),
                             [f"The new entry's address {address} is not within the range [100 : 150]"])
        self.refused(409, -977, "add", self.add(149, 4))  # its second register would lie behind the range
        last = {"outputId": 149, "outputSize": 2, "source": "last", "dataOffset": 3, "dataLength": 4}
        self.done("add", last)
        self.assertEqual(self.map()[-1], last)

    def test_an_incomplete_item_is_refused(self):
        self.refused(422, -997, "add", self.add(100, 0))
        self.refused(422, -997, "add", {"outputId": 100, "outputSize": 4})
        self.refused(422, -997, "add", {"source": "a", "outputSize": 4})

    def test_a_list_is_placed_one_behind_the_other(self):
        self.done("addAll", {"map": [{"source": "a", "outputSize": 4}, {"source": "b", "outputSize": 4},
                                     {"source": "c", "outputSize": 2}]})
        self.assertEqual(self.ids(), [100, 102, 104])
        self.done("addAll", {"map": [{"source": "d", "outputSize": 90}, {"source": "e", "outputSize": 90}]})
        self.assertEqual(self.ids(), [100, 102, 104, 105, 150])  # a list is not held to the range
        self.done("addAll", {"map": [{"source": "e", "outputSize": 2}, {"source": "", "outputSize": 2}]})
        self.assertEqual(len(self.ids()), 5)

    def test_an_insertion_makes_room_as_far_as_it_must(self):
        for before, inserted, after in ((((102, 4), (104, 4)), (102, 4), [(102, "new"), (104, "source 102"), (106, "source 104")]),
                                        (((100, 20), (110, 4)), (109, 4),
                                         [(100, "source 100"), (109, "new"), (111, "source 110")]),
                                        (((100, 4), (110, 4)), (109, 4),
                                         [(109, "new"), (111, "source 100"), (113, "source 110")])):
            self.fill(*before)
            self.assertEqual(self.refused(422, -997, "add", self.add(*inserted, source="new")), [OVERLAP.format("new")])
            self.done("add", self.add(*inserted, shift=True, source="new"))
            self.assertEqual([(item["outputId"], item["source"]) for item in self.map()], after)

    def test_what_fits_between_two_is_refused_and_lands_too_early_with_leave_to_shift(self):
        self.fill((100, 4), (120, 4))
        self.assertEqual(self.refused(422, -997, "add", self.add(110, 4)), [OVERLAP.format("source 110")])
        self.done("add", self.add(110, 4, shift=True))
        self.assertEqual(self.ids(), [110, 100, 120])

    def test_behind_the_last_item_nothing_is_tested(self):
        self.fill((100, 20))
        self.done("add", self.add(101, 4))
        self.assertEqual(self.ids(), [100, 101])

    def test_an_item_may_be_lost_on_its_way_to_a_new_address(self):
        self.fill((100, 4), (120, 2))
        lost = self.call("updateId", {"map": [{"outputId": 100}, {"outputId": 119}]})
        self.assertEqual((lost.status, lost.json["code"]), (422, -997))
        self.assertEqual(self.ids(), [120])

    def test_gaps_close(self):
        self.fill((100, 4), (110, 2))
        self.done("compactId")
        self.assertEqual(self.ids(), [100, 102])

    def test_results_follow_the_addresses(self):
        self.done("addAll", {"map": [{"source": "profile/zMax", "outputSize": 8}, {"source": "profile/width", "outputSize": 8}]})
        wait_until(lambda: self.sent().get(104) in (60, 20), "results at their addresses")
        self.done("remove", {"outputId": 100})
        wait_until(lambda: set(self.sent()) == {104}, "results without the one that was removed")


del Maps  # has no tests of its own


if __name__ == "__main__":
    unittest.main()
