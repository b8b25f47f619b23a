// Jobs: list, load, save, copy, upload, download, delete; the report of the last load; hostile names.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
import { Host } from "./host.mjs";

const HOSTILE = "<img src=x onerror=alert(1)>";
let browser;
let host;

before(async () => {
    browser = await launch();
    host = await new Host().start();
});

after(async () => {
    await browser.close();
    await host.end();
});

const open = (options) => openPage(browser, host, { path: "/ui/#/jobs", ...options });
const jobs = async () => (await host.get("/jobs")).jobs;
const loaded = async () => (await jobs()).find((job) => job.loaded).name;

test("a job is copied, loaded, and the old one is loaded again", async () => {
    const page = await open();
    await page.getByLabel("New name").fill("line 7");
    await page.getByRole("button", { name: "Copy" }).click();
    await page.getByText("The loaded job is copied to line 7.").waitFor();
    await page.getByRole("button", { name: "Load line 7" }).click();
    await page.getByText("The job line 7 is loaded.").waitFor();
    assert.equal(await loaded(), "line 7");
    await page.getByText(/kept: .*parameters/).first().waitFor();
    await page.getByRole("button", { name: "Go back to default" }).click();
    await page.getByText("The job default is loaded.").waitFor();
    assert.equal(await loaded(), "default");
    await page.getByRole("button", { name: "Save default" }).click();
    await page.getByText("The job default is saved.").waitFor();
    await closePage(page);
});

test("a job is downloaded, deleted after a question, and uploaded", async () => {
    await host.send("POST", "/jobs/travel/save");
    const page = await open();
    const waiting = page.waitForEvent("download");
    await page.getByRole("link", { name: "Download travel" }).click();
    const download = await waiting;
    assert.equal(download.suggestedFilename(), "travel.zpjob");
    const bytes = readFileSync(await download.path());
    assert.equal(bytes.subarray(0, 15).toString(), "SQLite format 3");

    await page.getByRole("button", { name: "Delete travel" }).click();
    await page.getByRole("dialog").getByText("This cannot be undone.").waitFor();
    await checkAccess(page);
    await page.keyboard.press("Escape");
    assert.equal((await jobs()).length, 3, "Escape deletes nothing");
    await page.getByRole("button", { name: "Delete travel" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Delete" }).click();
    await page.getByText("The job travel is deleted.").waitFor();
    assert.ok(!(await jobs()).some((job) => job.name === "travel"));

    await page.getByLabel("File (.zpjob)").setInputFiles({ name: "travel.zpjob", mimeType: "application/octet-stream", buffer: bytes });
    await page.getByRole("button", { name: "Upload" }).click();
    await page.getByText("The job travel is uploaded.").waitFor();
    assert.ok((await jobs()).some((job) => job.name === "travel"));
    await closePage(page);
});

test("a file that is no job or too long is refused with the reason", async () => {
    const page = await open();
    const input = page.getByLabel("File (.zpjob)");
    await input.setInputFiles({ name: "bad.zpjob", mimeType: "application/octet-stream", buffer: Buffer.from("no archive") });
    await page.getByRole("button", { name: "Upload" }).click();
    await page.getByRole("status").and(page.locator("#job-file-hint.refusal")).waitFor();
    assert.equal(await input.getAttribute("aria-invalid"), "true");
    assert.equal(await input.getAttribute("aria-describedby"), "job-file-hint");
    await input.setInputFiles({ name: "long.zpjob", mimeType: "application/octet-stream", buffer: Buffer.alloc(1024 * 1024 + 1) });
    await page.getByText("the host takes at most 1.0 MiB").waitFor();
    assert.ok(await page.getByRole("button", { name: "Upload" }).isDisabled());
    assert.ok(!(await jobs()).some((job) => ["bad", "long"].includes(job.name)));
    await closePage(page);
});

test("a job that cannot be loaded does not change what Go back means", async () => {
    await host.send("POST", "/jobs/second/save");
    await host.send("POST", "/jobs/default/load");
    const page = await open();
    await page.getByRole("button", { name: "Load second" }).click();
    await page.getByRole("button", { name: "Go back to default" }).waitFor();
    await page.route("**/jobs/default/load", (route) => route.fulfill({ status: 409, contentType: "application/problem+json",
        body: JSON.stringify({ status: 409, detail: "The sensor scans." }) }));
    await page.getByRole("button", { name: "Load default" }).click();
    await page.getByText("The sensor scans.").waitFor();
    await page.getByRole("button", { name: "Go back to default" }).waitFor();
    await page.unroute("**/jobs/default/load");
    await page.getByRole("button", { name: "Go back to default" }).click();
    await page.getByText("The job default is loaded.").waitFor();
    await closePage(page);
});

test("a job is copied and deleted by keyboard alone", async () => {
    const page = await open();
    await page.getByRole("rowheader", { name: "default" }).waitFor();
    await tabTo(page, "textbox", "New name");
    await page.keyboard.type("keys");
    await page.keyboard.press("Tab");
    await page.keyboard.press("Enter");
    await page.getByRole("rowheader", { name: "keys" }).waitFor();
    await tabTo(page, "button", "Delete keys");
    await page.keyboard.press("Enter");
    await tabTo(page, "button", "Delete");
    await page.keyboard.press("Enter");
    await page.getByText("The job keys is deleted.").waitFor();
    assert.ok(!(await jobs()).some((job) => job.name === "keys"));
    await closePage(page);
});

test("a hostile name is text", async () => {
    await host.send("POST", `/jobs/${encodeURIComponent(HOSTILE)}/save`);
    const page = await open();
    await page.getByRole("rowheader", { name: HOSTILE }).waitFor();
    await page.getByRole("button", { name: `Load ${HOSTILE}` }).click();
    await page.getByText(`The job ${HOSTILE} is loaded.`).waitFor();
    assert.equal(await loaded(), HOSTILE);
    assert.equal(await page.locator("main img").count(), 0);
    await page.goto(`${host.url}/ui/#/overview`);
    await page.getByText(HOSTILE).first().waitFor();
    assert.equal(await page.locator("main img").count(), 0);
    await page.goto(`${host.url}/ui/#/${encodeURIComponent(HOSTILE)}`);
    await page.getByText("There is no view").waitFor();
    assert.equal(await page.locator("main img").count(), 0);
    await host.send("POST", "/jobs/default/load");
    await closePage(page);
});

for (const [width, dark] of [[360, true], [1920, false]]) {
    test(`the jobs fit ${width} pixels`, async () => {
        const page = await open({ width, dark });
        await page.getByRole("rowheader", { name: "default" }).waitFor();
        await until(async () => (await page.getByText("Reading …").count()) === 0, "the report");
        await checkWidth(page);
        await checkAccess(page);
        await closePage(page);
    });
}
