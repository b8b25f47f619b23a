// A browser that watches what the console does: errors of the page and requests to other places fail a test.
import assert from "node:assert/strict";
import AxeBuilder from "@axe-core/playwright";
import { chromium } from "playwright-core";
import { PATIENCE_MS } from "./host.mjs";

const AXE_TAGS = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"];

export function launch() {
    const executablePath = process.env.ZU_CHROMIUM ?? "/usr/bin/chromium";
    return chromium.launch({ executablePath, args: process.getuid() === 0 ? ["--no-sandbox"] : [] });
}

/// A page of its own, without cookies. `expectsLoss`: the host goes away during the test, so failed requests are no fault.
export async function openPage(browser, host, { path = "/ui/", width = 1280, height = 800, dark = false, expectsLoss = false,
    javaScriptEnabled = true } = {}) {
    const context = await browser.newContext({ viewport: { width, height }, colorScheme: dark ? "dark" : "light", javaScriptEnabled,
        bypassCSP: false, acceptDownloads: true });
    context.setDefaultTimeout(PATIENCE_MS);
    const page = await context.newPage();
    const faults = [];
    page.on("pageerror", (error) => faults.push(`error: ${error.message}`));
    page.on("console", (message) => {
        const isRefusal = message.text().startsWith("Failed to load resource"); // an answer that the page shows
        if (message.type() === "error" && !isRefusal && !(expectsLoss && message.text().includes("ERR_"))) {
            faults.push(`console: ${message.text()}`);
        }
    });
    page.on("request", (request) => {
        const url = new URL(request.url());
        if (url.host !== new URL(host.url).host && url.protocol !== "blob:") {
            faults.push(`request: ${request.url()}`);
        }
    });
    page.faults = faults;
    await page.goto(host.url + path);
    return page;
}

/// Fails with what went wrong in the page, and closes it.
export async function closePage(page) {
    await page.context().close();
    assert.deepEqual(page.faults, []);
}

/// Asserts that axe finds no violation. The rules run in a page of the same browser, outside of the page's policy.
export async function checkAccess(page) {
    const { violations } = await new AxeBuilder({ page }).withTags(AXE_TAGS).analyze();
    const found = violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => `${node.target} ${node.failureSummary}`).join("; ")}`);
    assert.deepEqual(found, []);
}

/// Asserts that nothing is wider than the window.
export async function checkWidth(page) {
    const [needed, present] = await page.evaluate(() => [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
    const wide = await page.evaluate((limit) => [...document.querySelectorAll("body *")]
        .filter((element) => element.getBoundingClientRect().right > limit && element.closest(".tablebox") === null)
        .map((element) => `${element.tagName}.${element.className}`), present);
    assert.ok(needed <= present, `the page is ${needed} pixels wide, the window ${present}: ${wide}`);
}

/// The words that the grid of the registers shows from an address on.
export async function cells(page, address, count) {
    const places = Array.from({ length: count }, (_, i) => page.locator(`[data-register="${address + i}"]`));
    return (await Promise.all(places.map((place) => place.innerText()))).join(" ");
}

/// Presses Tab until the element with this role and name has the focus.
export async function tabTo(page, role, name) {
    const wanted = page.getByRole(role, { name, exact: true });
    for (let presses = 0; presses < 200; ++presses) {
        if (await wanted.evaluate((element) => element === document.activeElement)) {
            return wanted;
        }
        await page.keyboard.press("Tab");
    }
    throw new Error(`Tab does not reach the ${role} '${name}'`);
}

/// Waits until `condition` gives a true value, and returns it.
export async function until(condition, what) {
    const deadline = Date.now() + PATIENCE_MS;
    while (Date.now() < deadline) {
        const value = await condition();
        if (value) {
            return value;
        }
        await new Promise((resolve) => setTimeout(resolve, 20));
    }
    throw new Error(`waited in vain for ${what}`);
}
