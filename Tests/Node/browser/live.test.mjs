// Live: the profile, the range image and the measurements as they come; the commands of the sensor on the overview.
import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { cells, checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
import { hex, Host } from "./host.mjs";

let browser;
let host;

before(async () => {
    browser = await launch();
    host = await new Host().start("--start", "--still");
});

after(async () => {
    await browser.close();
    await host.end();
});

const open = (options) => openPage(browser, host, { path: "/ui/#/live", ...options });
const frameOf = async (page) => Number((await page.getByText(/^Frame/).innerText()).replace(/\D/g, ""));
const state = async () => (await host.get("/sensor")).state;

test("profiles come, and stop while the page is frozen", async () => {
    const page = await open();
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    await page.getByRole("img", { name: /^Height map of the last/ }).waitFor();
    const first = await frameOf(page);
    await until(async () => (await frameOf(page)) > first, "the next profile");
    await page.getByRole("button", { name: "Freeze" }).click();
    await page.getByText("frozen", { exact: true }).waitFor();
    const frozen = await frameOf(page);
    const table = page.getByRole("group", { name: "Points" });
    await table.waitFor();
    await until(async () => (await host.get("/profile")).frame > frozen + 20, "profiles that the page does not show");
    assert.equal(await frameOf(page), frozen);
    const profile = await host.get("/profile?points=512");
    const heights = (await table.getByRole("row").locator("td:nth-child(3)").allInnerTexts()).map(Number);
    assert.equal(Math.max(...heights.filter((z) => !Number.isNaN(z))), Math.max(...profile.z.filter((z) => z !== null)));
    await page.getByRole("button", { name: "Freeze" }).click();
    await until(async () => (await frameOf(page)) > frozen, "the page to go on");
    await closePage(page);
});

test("the measurements are those that a PLC reads", async () => {
    const page = await open();
    for (const [name, address] of [["zMax", 170], ["zMin", 173], ["width", 176], ["meanZ", 179]]) {
        const number = await host.number(address);
        const shown = page.locator(`[data-measurement="profile/${name}"]`);
        await until(async () => Math.round(parseFloat((await shown.innerText()).replace(/[^\d.-]/g, "")) * 1000) === number, `${name}, ${number}`);
    }
    await closePage(page);
});

test("limits that somebody sets turn the decision", async () => {
    const page = await open();
    const one = page.getByRole("listitem").filter({ hasText: "Largest Height" });
    await one.getByText("pass").waitFor();
    await page.getByText("Limits", { exact: true }).click();
    const form = page.getByRole("form", { name: "Limits of Largest Height" });
    await form.getByLabel("Limits Decide").check();
    await form.getByLabel("Minimum").fill("1");
    await form.getByLabel("Maximum").fill("2");
    await form.getByRole("button", { name: "Save" }).click();
    await one.getByText("outside limits").waitFor();
    assert.equal((await host.registers(172, 1))[0], 0);
    await form.getByLabel("Minimum").fill("3");
    await form.getByRole("button", { name: "Save" }).click();
    await form.getByRole("alert").waitFor();
    await checkAccess(page);
    await host.send("PUT", "/sensor/limits", { zMax: { enabled: false } });
    await closePage(page);
});

test("the values in the registers are those that a PLC reads", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp" });
    for (const address of [170, 173, 176]) {
        const number = await host.number(address);
        const text = page.locator(`[data-value="${address}"]`);
        await until(async () => Math.round(parseFloat((await text.innerText()).replace(/[^\d.-]/g, "")) * 1000) === number, `the value at ${address}`);
        assert.equal(await cells(page, address, 3), hex(await host.registers(address, 3)));
    }
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: 1 } });
    // Until the next frame, the registers have the marks of invalid values in the new order.
    await page.getByText("byte order CDAB").waitFor();
    await until(async () => (await cells(page, 170, 3)) === hex(await host.registers(170, 3)), "the new order");
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: 0 } });
    await closePage(page);
});

test("the sensor is stopped, started and triggered by keyboard alone", async () => {
    const page = await open({ path: "/ui/" });
    await page.getByText("Scanning").waitFor();
    await tabTo(page, "button", "Stop");
    await page.keyboard.press("Enter");
    await page.getByText("The scan stop is done.").waitFor();
    await page.getByText("Stands still").waitFor();
    assert.equal(await state(), "ready");
    await tabTo(page, "button", "Start");
    await page.keyboard.press("Enter");
    await page.getByText("The scan start is done.").waitFor();
    assert.equal(await state(), "running");
    await page.getByRole("button", { name: "Trigger" }).click();
    await page.getByText("The software trigger is done.").waitFor();
    await closePage(page);
});

test("an alignment shows that it runs, and ends", async () => {
    await host.send("POST", "/sensor/commands/stop", {});
    const page = await open({ path: "/ui/" });
    await page.getByRole("button", { name: "Align", exact: true }).click();
    await page.getByText(/^Under way: alignment/).waitFor();
    await page.getByText("The alignment is done.").waitFor();
    assert.equal((await host.get("/sensor")).alignment, "aligned");
    await page.getByRole("button", { name: "Clear alignment" }).click();
    await page.getByText("The removal of the alignment is done.").waitFor();
    await host.send("POST", "/sensor/commands/start", {});
    await closePage(page);
});

test("without authority the commands are greyed out, and the page says why", async () => {
    await host.send("PUT", "/sensor/authority", { rest: 2 });
    const page = await open({ path: "/ui/" });
    await page.getByText("Only PLCs may run the sensor.").waitFor();
    assert.ok(await page.getByRole("button", { name: "Stop" }).isDisabled());
    await host.send("PUT", "/sensor/authority", { rest: 0 });
    await until(() => page.getByRole("button", { name: "Stop" }).isEnabled(), "the authority");
    await closePage(page);
});

test("a height map of few profiles stays so after a pause", async () => {
    const own = await new Host().start("--still", "--rate", "5");
    const page = await openPage(browser, own, { path: "/ui/#/live" });
    await own.send("POST", "/sensor/commands/start", {});
    await page.getByRole("img", { name: /^Height map of the last [3-9] profiles/ }).waitFor();
    await own.send("POST", "/sensor/commands/stop", {});
    await until(async () => (await own.get("/sensor")).state === "ready", "the stop");
    const rows = (await own.get("/rangeimage")).rows;
    const map = page.getByRole("img", { name: `Height map of the last ${rows} profiles`, exact: false });
    await map.waitFor();
    const button = page.getByRole("button", { name: "Freeze" });
    await button.click();
    await page.getByText("frozen", { exact: true }).waitFor();
    const stream = page.waitForResponse((response) => response.url().includes("/rangeimage"));
    await button.click();
    await stream;
    await until(async () => (await page.getByText("frozen", { exact: true }).count()) === 0, "the page to go on");
    await page.waitForResponse((response) => response.url().includes("/datasources")); // behind the first rows of the stream
    await page.waitForResponse((response) => response.url().includes("/health"));
    assert.equal(await map.count(), 1, await page.getByRole("img", { name: /^Height map/ }).getAttribute("aria-label"));
    await closePage(page);
    await own.end();
});

/// A range image as a file: a slope from `low` to `high` metres across, and the same in each row.
function slope(path, low, high) {
    const [columns, rows] = [20, 4];
    const points = Array.from({ length: columns * rows }, (_, index) => {
        const column = index % columns;
        return `${(column / 1000).toFixed(6)} ${(Math.floor(index / columns) / 1000).toFixed(6)} ${(low + ((high - low) * column) / (columns - 1)).toFixed(6)}`;
    });
    writeFileSync(path, ["VERSION 0.7", "FIELDS x y z", "SIZE 4 4 4", "TYPE F F F", "COUNT 1 1 1", `WIDTH ${columns}`, `HEIGHT ${rows}`,
        "VIEWPOINT 0 0 0 1 0 0 0", `POINTS ${points.length}`, "DATA ascii", ...points, ""].join("\n"));
}

test("a replayed range image is shown, with the numbers that a PLC reads", async () => {
    const own = new Host();
    const file = join(own.data, "slope.pcd");
    slope(file, 0.012, 0.031);
    await own.start("--start", "--replay", file);
    const page = await openPage(browser, own, { path: "/ui/#/live" });
    await page.getByRole("img", { name: /^Profile of frame .* with 20 points/ }).waitFor();
    await page.getByRole("img", { name: /^Height map of the last \d+ profiles, from 12\.0 to 31\.0 mm/ }).waitFor();
    for (const [name, address, value] of [["zMax", 170, 31_000], ["zMin", 173, 12_000], ["width", 176, 19_000]]) {
        assert.equal(await own.number(address), value, name);
        const shown = page.locator(`[data-measurement="profile/${name}"]`);
        await until(async () => Math.round(parseFloat((await shown.innerText()).replace(/[^\d.-]/g, "")) * 1000) === value, name);
    }
    await closePage(page);
    await own.end();
});

test("values grey out when the connection is cut, and come back", async () => {
    const own = await new Host().start("--start", "--still");
    const page = await openPage(browser, own, { path: "/ui/#/live", expectsLoss: true });
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    await own.stop("SIGKILL");
    await page.getByText(/No connection for/).waitFor();
    for (const title of ["Profile", "Range image", "Measurements"]) {
        await page.getByRole("region", { name: title }).and(page.locator(".old")).waitFor();
    }
    await checkAccess(page);
    await own.start("--start", "--still");
    await page.locator("section.old").first().waitFor({ state: "detached" });
    const first = await frameOf(page);
    await until(async () => (await frameOf(page)) > first, "new profiles");
    await closePage(page);
    await own.end();
});

for (const path of ["overview", "live"]) {
    for (const [width, dark] of [[360, true], [1920, false]]) {
        test(`${path} fits ${width} pixels while the sensor runs`, async () => {
            const page = await open({ path: `/ui/#/${path}`, width, dark });
            await page.getByText(path === "live" ? /^Frame \d/ : "Scanning").waitFor();
            await checkWidth(page);
            await checkAccess(page);
            await closePage(page);
        });
    }
}
