// Registers: the map, its values, and changes with the consequence shown first.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
import { Host } from "./host.mjs";

const ASSEMBLY = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0";
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

const open = (options) => openPage(browser, host, { path: "/ui/#/registers/ModbusTcp", ...options });
const addresses = async () => (await host.get(ASSEMBLY)).blocks.map((block) => block.outputId);

/// Chooses a data source in a list, or types it where the host has no list.
async function chooseSource(form, source) {
    const input = form.getByLabel("Data source");
    const isList = await input.evaluate((element) => element.tagName === "SELECT");
    await (isList ? input.selectOption(source) : input.fill(source));
}

test("a block is added, moved and removed, each after its consequence", async () => {
    const page = await open();
    const add = page.getByRole("form", { name: "Add a block" });
    await add.getByLabel("Content").selectOption("MeasurementValue");
    await add.getByLabel("First register").fill("300");
    await chooseSource(add, "profile/zMax");
    await add.getByRole("button", { name: "Add …" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByText("adds profile/zMax at 300").waitFor();
    await dialog.getByText(/fingerprint becomes/).waitFor();
    assert.ok(!(await addresses()).includes(300), "nothing changes before the answer");
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Do it" }).click();
    await dialog.waitFor({ state: "detached" });
    assert.ok((await addresses()).includes(300));
    assert.match(page.url(), /address=300/, "the address of the page names the selection");

    const block = page.getByRole("form", { name: "Block at 300" });
    await block.getByLabel("First register").fill("310");
    await block.getByRole("button", { name: "Change …" }).click();
    await dialog.getByText("moves profile/zMax from 300 to 310").waitFor();
    await dialog.getByRole("button", { name: "Do it" }).click();
    await page.getByRole("form", { name: "Block at 310" }).waitFor();
    assert.ok((await addresses()).includes(310));

    await page.getByRole("button", { name: "Remove …" }).click();
    await dialog.getByText("removes profile/zMax from 310").waitFor();
    await dialog.getByRole("button", { name: "Do it" }).click();
    await dialog.waitFor({ state: "detached" });
    assert.ok(!(await addresses()).includes(310));

    await page.getByRole("button", { name: "Undo" }).click();
    await page.getByText("Taken back.").waitFor();
    assert.ok((await addresses()).includes(310));
    await host.send("POST", `${ASSEMBLY}/commands/remove`, { outputIdList: [{ outputId: 310 }] });
    await closePage(page);
});

test("a gap is closed and opened again", async () => {
    await host.send("POST", `${ASSEMBLY}/commands/add`, { blocks: [{ type: "MeasurementValue", outputId: 400, dataSource: "profile/zMax" }] });
    const page = await open();
    await page.getByRole("button", { name: "Compact …" }).click();
    await page.getByRole("dialog").getByText("moves profile/zMax from 400 to 185").waitFor();
    await page.getByRole("button", { name: "Do it" }).click();
    await until(async () => (await addresses()).includes(185), "the moved block");
    await page.getByRole("button", { name: "Undo" }).click();
    await until(async () => (await addresses()).includes(400), "the block at its old place");
    await host.send("POST", `${ASSEMBLY}/commands/remove`, { outputIdList: [{ outputId: 400 }] });
    await closePage(page);
});

test("a change that is refused says why before it is tried", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp?address=0" });
    await page.getByRole("form", { name: "Block at 0" }).getByRole("button", { name: "Remove …" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.locator(".refusal").first().waitFor();
    assert.ok(await dialog.getByRole("button", { name: "Do it" }).isDisabled());
    await page.keyboard.press("Escape");
    await dialog.waitFor({ state: "detached" });
    assert.ok((await addresses()).includes(0));
    await closePage(page);
});

test("a block is chosen by keyboard, and the address leads a colleague to it", async () => {
    const page = await open();
    await page.getByRole("button", { name: "170–172" }).waitFor();
    await tabTo(page, "button", "170–172");
    await page.keyboard.press("Enter");
    await page.getByRole("form", { name: "Block at 170" }).waitFor();
    const second = await openPage(browser, host, { path: page.url().slice(host.url.length) });
    await second.getByRole("form", { name: "Block at 170" }).waitFor();
    await closePage(second);
    await closePage(page);
});

test("an output is added, renamed and removed", async () => {
    const page = await open({ path: "/ui/#/registers/AsciiTcp" });
    const names = async () => (await host.get("/controls/AsciiTcp/outputs")).map.map((one) => one.outputId);
    const dialog = page.getByRole("dialog");
    const agree = async () => {
        await dialog.getByRole("button", { name: "Do it" }).click();
        await dialog.waitFor({ state: "detached" });
    };
    await page.getByRole("button", { name: "Rename zMax" }).click();
    await page.getByLabel("New name").fill("<b>height</b>");
    await page.keyboard.press("Enter");
    await agree();
    assert.ok((await names()).includes("<b>height</b>"));
    await page.getByRole("cell", { name: "<b>height</b>", exact: true }).waitFor();
    await page.getByRole("button", { name: "Remove <b>height</b>" }).click();
    await agree();
    assert.ok(!(await names()).includes("<b>height</b>"));
    const add = page.getByRole("form", { name: "Add an output" });
    await add.getByLabel("Name").fill("zMax");
    await chooseSource(add, "profile/zMax");
    await add.getByRole("button", { name: "Add …" }).click();
    await agree();
    assert.ok((await names()).includes("zMax"));
    await closePage(page);
});

for (const [width, dark] of [[360, false], [1920, true]]) {
    test(`the registers fit ${width} pixels`, async () => {
        const page = await open({ width, dark, path: "/ui/#/registers/ModbusTcp?address=170" });
        await page.getByRole("form", { name: "Block at 170" }).waitFor();
        await checkWidth(page);
        await checkAccess(page);
        await closePage(page);
    });
}
