// Events: problems, operations, changes and the log, with filters; and the metrics over time.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, until } from "./browser.mjs";
import { Host } from "./host.mjs";

let browser;
let host;

before(async () => {
    browser = await launch();
    host = await new Host().start("--start");
});

after(async () => {
    await browser.close();
    await host.end();
});

const open = (options) => openPage(browser, host, { path: "/ui/#/events", ...options });

test("a change elsewhere is shown, and a filter hides it", async () => {
    const page = await open();
    await page.getByRole("group", { name: "Events" }).waitFor();
    await until(async () => {
        await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 61 } });
        return (await page.getByText("/controls/ModbusTcp has changed").count()) > 0;
    }, "the change");
    await page.getByLabel("Changes").uncheck();
    await page.getByText("/controls/ModbusTcp has changed").first().waitFor({ state: "detached" });
    assert.match(page.url(), /hide=change/);
    await page.getByLabel("Changes").check();
    await page.getByLabel("Search").fill("no such text");
    await page.getByText("Nothing to show.").waitFor();
    await closePage(page);
});

test("a service that cannot start is a problem and a line of the log", async () => {
    const page = await open();
    await fetch(`${host.url}/controls/AsciiTcp`, { method: "PUT", body: JSON.stringify({ enabled: true, parameters: { port: host.ports.http } }) });
    const region = page.getByRole("group", { name: "Events" });
    await region.getByRole("row").filter({ hasText: "problem" }).filter({ hasText: "cannot listen" }).first().waitFor();
    const kinds = region.getByRole("cell", { name: "log", exact: true });
    await kinds.first().waitFor();
    const { lines } = await host.get("/log");
    await region.getByText(lines.at(-1).text).first().waitFor();
    await closePage(page);
});

test("the view follows until it is told not to", async () => {
    const page = await open({ height: 500 });
    const box = page.getByRole("group", { name: "Events" });
    let seconds = 100;
    // The host tells a slow reader of several changes at once, so changes go on until the view has the lines.
    const fill = (lines) =>
        until(async () => {
            seconds += 1;
            await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: seconds } });
            return (await box.getByRole("row").count()) > lines;
        }, `${lines} lines`);
    await page.getByRole("button", { name: "Follow", pressed: true }).waitFor();
    await fill(30);
    await until(() => box.evaluate((one) => one.scrollHeight > one.clientHeight && one.scrollTop + one.clientHeight >= one.scrollHeight - 2), "the end");
    await page.getByRole("button", { name: "Follow" }).click();
    await box.evaluate((one) => one.scrollTo(0, 0));
    await fill(50);
    assert.equal(await box.evaluate((one) => one.scrollTop), 0);
    await closePage(page);
});

test("a number of a service is chosen and drawn", async () => {
    const page = await open({ path: "/ui/#/metrics" });
    await page.getByLabel("Search").fill("ModbusTcp");
    const series = 'zucontrol_dispatcher_result_sets_total{protocol="ModbusTcp"}';
    const box = page.getByLabel(`Show ${series}`, { exact: true });
    await box.waitFor();
    await box.setChecked(true);
    await page.getByRole("list", { name: "Shown numbers" }).getByText(series).waitFor();
    await page.locator(".chart canvas").waitFor();
    await checkAccess(page);
    const second = await openPage(browser, host, { path: page.url().slice(host.url.length) });
    await second.getByRole("list", { name: "Shown numbers" }).getByText(series).waitFor();
    await closePage(second);
    await closePage(page);
});

for (const view of ["events", "metrics"]) {
    for (const [width, dark] of [[360, true], [1920, false]]) {
        test(`the ${view} fit ${width} pixels`, async () => {
            const page = await open({ path: `/ui/#/${view}`, width, dark });
            await page.getByRole("region").first().waitFor();
            await checkWidth(page);
            await checkAccess(page);
            await closePage(page);
        });
    }
}
