// Takes the pictures of docs/console.md from the real host: see scripts/console-pictures.
import { join } from "node:path";
import { launch, openPage, until } from "./browser.mjs";
import { Host } from "./host.mjs";

const folder = process.argv[2];
const VIEWS = [
    { name: "overview", path: "overview", wait: (page) => page.getByText("Scanning").waitFor() },
    { name: "live", path: "live", wait: (page) => page.getByRole("img", { name: /^Height map of the last 100/ }).waitFor() },
    { name: "services", path: "services/ModbusTcp", wait: (page) => page.locator("[data-metric=resultSets]").waitFor() },
    { name: "registers", path: "registers/ModbusTcp?address=150", wait: (page) => page.getByRole("form", { name: "Block at 150" }).waitFor() },
    { name: "jobs", path: "jobs", wait: (page) => page.getByRole("rowheader", { name: "line 7" }).waitFor() },
    { name: "events", path: "events", wait: (page) => page.getByRole("cell", { name: "problem", exact: true }).first().waitFor() },
    { name: "metrics", path: `metrics?show=${encodeURIComponent('zucontrol_dispatcher_result_sets_total{protocol="ModbusTcp"}')}`, wait: (page) => until(async () => (await page.locator(".chart canvas").count()) > 0, "the chart") },
    { name: "security", path: "security/users", wait: (page) => page.getByRole("form", { name: "Add a user" }).waitFor() },
];
const SETTLING_MS = 2_000; // lines of some length
const CHART_MS = 40_000;

const browser = await launch();
const host = await new Host().start("--start", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0");
await host.send("POST", "/jobs/line%207/save");
for (const { name, path, wait } of VIEWS) {
    const page = await openPage(browser, host, { path: `/ui/#/${path}`, width: 1280, height: 760 });
    if (name === "events") {
        await fetch(`${host.url}/controls/AsciiTcp`, { method: "PUT", body: JSON.stringify({ parameters: { port: host.ports.http } }) });
        await fetch(`${host.url}/controls/SparkplugMqtt`, { method: "PUT", body: JSON.stringify({ enabled: true }) });
    }
    await wait(page);
    await page.waitForTimeout(name === "metrics" ? CHART_MS : SETTLING_MS);
    await page.screenshot({ path: join(folder, `console-${name}.png`) });
    console.log(`console-${name}.png`);
    await page.context().close();
}
await browser.close();
await host.end();
