"""The sensor's inputs and outputs, and their configurations over REST, against the real host."""

import unittest

from host import Host, wait_until
from rest import EventStream, RestClient, check_hal

DEVICE = "/controls/hardware/0"
OUTPUTS = {"zu:digitalOutput": "digital", "zu:analogOutput": "analog", "zu:marletOutput": "marlet", "zu:serialOutput": "serial"}


class Hardware(unittest.TestCase):
    def test_the_sensor_is_asked_once_and_before_anything_is_enabled(self):
        with Host() as host:
            enabled = host.wait_for_log("new handler registered for protocol:1")
            lines = [line for line in host.errors if line is not None]
            asked = [line for line in lines if "interfaceCount" in line]
            self.assertEqual([line.split("UpdateHardwareList] ")[1] for line in asked],
                             [f"type:{kind}, interfaceCount:{count}" for kind, count in ((1, 2), (2, 1), (3, 2), (4, 2))])
            self.assertLess(lines.index(asked[-1]), lines.index(enabled))


class Configurations(unittest.TestCase):
    def test_a_device_shows_its_scanner_and_its_outputs(self):
        with Host() as host, RestClient(host.http_port) as rest:
            devices = rest.get("/controls/hardware").json
            check_hal(self, devices, "/controls/hardware")
            self.assertEqual([item["_links"]["self"]["href"] for item in devices["_embedded"]["item"]],
                             [DEVICE, "/controls/hardware/1"])
            device = rest.get(DEVICE).json
            self.assertEqual(device["_links"]["zu::scanner"]["href"], "/scanners/0")
            self.assertEqual({key: output["_links"]["self"]["href"] for key, output in device["_embedded"].items()},
                             {key: f"{DEVICE}/{kind}" for key, kind in OUTPUTS.items()})

    def test_a_change_is_seen_at_every_port_and_told_once(self):
        with Host() as host, RestClient(host.http_port) as rest, EventStream(host.http_port, "/events") as events:
            for kind in OUTPUTS.values():
                path = f"{DEVICE}/{kind}/3"
                for _ in range(2):  # the second changes nothing
                    self.assertEqual(rest.put(path, {"enabled": True}).json["enabled"], True)
                self.assertEqual(rest.get(f"/controls/hardware/1/{kind}/0").json["enabled"], True)
                self.assertEqual(events.next(), {"type": 2, "path": path})

    def test_a_change_that_is_told_to_nobody_is_read_all_the_same(self):
        with Host() as host, RestClient(host.http_port) as rest, EventStream(host.http_port, "/events") as events:
            rest.put(f"{DEVICE}/serial/0", {"format": {"customFromatEnabled": True}})
            rest.put(f"{DEVICE}/serial/0", {"rate": 9600})  # the marker
            self.assertEqual(events.next(), {"type": 2, "path": f"{DEVICE}/serial/0"})
            shown = rest.get(f"{DEVICE}/serial/0?schema=true").json
            self.assertEqual((shown["format"]["customFromatEnabled"], shown["rate"]), (True, 9600))
            self.assertEqual(shown["_schema"]["properties"]["format"]["properties"]["customFromatEnabled"]["title"],
                             "Custom Format Enabled")

    def test_what_is_refused_changes_nothing(self):
        with Host() as host, RestClient(host.http_port) as rest:
            before = rest.get(f"{DEVICE}/digital/0").text
            self.assertEqual(rest.put(f"{DEVICE}/digital/0", {"enabled": True, "pulseWidth": -1}).status, 422)
            self.assertEqual(rest.put(f"{DEVICE}/digital/0", {"enabled": "yes"}).status, 400)
            self.assertEqual(rest.get(f"{DEVICE}/digital/0").text, before)
            self.assertEqual(rest.put(DEVICE, {"label": "mine"}).status, 405)

    def test_an_update_without_a_port_is_refused_before_it_changes_the_record(self):
        with Host() as host, RestClient(host.http_port) as rest:
            for kind in OUTPUTS.values():
                before = rest.get(f"{DEVICE}/{kind}")
                refused = rest.put(f"{DEVICE}/{kind}", {"enabled": True})
                self.assertEqual((before.status, refused.status, refused.headers["Allow"]), (200, 405, "GET, HEAD, OPTIONS"), kind)
                self.assertEqual(rest.get(f"{DEVICE}/{kind}").text, before.text)
            self.assertEqual([line for line in host.errors if line and " ERROR " in line.upper()], [])


if __name__ == "__main__":
    unittest.main()
