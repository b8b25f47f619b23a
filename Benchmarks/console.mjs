// Measures what the console costs, with the real host and a real browser: transfer, first number, CPU, memory of the page.
//
// usage: ZU_BIN=FOLDER_OF_PROGRAMS node Benchmarks/console.mjs [--quick] [--minutes N]
//   --quick       rough figures
//   --minutes N   how long the Live view is watched for its memory; 3, in a quick run 1; the goal is meant for 60
//
// Prints "figure NAME VALUE" lines; times are in nanoseconds.
import { readFileSync, readdirSync } from "node:fs";
import { get } from "node:http";
import { parseArgs } from "node:util";
import { closePage, launch, openPage, until } from "../Tests/Node/browser/browser.mjs";
import { Host } from "../Tests/Node/browser/host.mjs";

const { values: options } = parseArgs({ options: { quick: { type: "boolean" }, minutes: { type: "string" } } });
const minutes = Number(options.minutes ?? (options.quick ? 1 : 3));
const RATE_HZ = 50;
const LOADS = options.quick ? 3 : 9;
const CPU_SECONDS = options.quick ? 5 : 20;
const ROUNDS = options.quick ? 3 : 9; // with and without viewers in turn
const ROUND_SECONDS = options.quick ? 3 : 6;
const VIEWERS = 10;
const WARM_UP_SECONDS = 90; // until the page has its code compiled and the lines of a minute filled
const VIEWS = ["overview", "live", "services/ModbusTcp", "registers/ModbusTcp", "jobs", "events", "metrics", "security/users"];
const FAN_OUT_THREADS = ["Sensor", "ResultHub", "CtrlScnRstDisp"];

const sleep = (seconds) => new Promise((resolve) => setTimeout(resolve, 1000 * seconds));
const median = (numbers) => numbers.toSorted((a, b) => a - b)[Math.floor(numbers.length / 2)];
const show = (name, value) => console.log(`figure Console/${name} ${value}`);

/// The CPU time of the host's threads so far, in nanoseconds; of all, or of those with these names.
function cpuOf(host, names) {
    const folder = `/proc/${host.process.pid}/task`;
    const threads = readdirSync(folder).filter((id) => !names || names.includes(readFileSync(`${folder}/${id}/comm`, "utf8").trim()));
    return threads.reduce((sum, id) => sum + Number(readFileSync(`${folder}/${id}/schedstat`, "utf8").split(" ")[0]), 0);
}

/// CPU time for a second of time.
async function cpuPerSecond(host, seconds) {
    const [cpu, time] = [cpuOf(host), process.hrtime.bigint()];
    await sleep(seconds);
    return (1e9 * (cpuOf(host) - cpu)) / Number(process.hrtime.bigint() - time);
}

/// CPU time of the fan-out and of what runs before and behind it on the same threads, for a profile.
async function fanOutPerProfile(host, seconds) {
    const taken = async () => (await host.get("/sensor")).profiles.taken;
    const [cpu, profiles] = [cpuOf(host, FAN_OUT_THREADS), await taken()];
    await sleep(seconds);
    return (cpuOf(host, FAN_OUT_THREADS) - cpu) / ((await taken()) - profiles);
}

/// A client that reads a stream of the Live view and drops it.
function watch(host, path) {
    const request = get(host.url + path, { headers: { accept: "application/octet-stream" } }, (answer) => answer.resume());
    request.on("error", () => {}); // its end
    return request;
}

async function measureTransfer(browser, host) {
    const page = await openPage(browser, host, { path: "/health" });
    const session = await page.context().newCDPSession(page);
    await session.send("Network.enable");
    const own = new Map();
    const totals = { transfer: 0, plain: 0 };
    session.on("Network.responseReceived", ({ requestId, response }) => own.set(requestId, new URL(response.url).pathname));
    session.on("Network.dataReceived", ({ requestId, dataLength }) => {
        totals.plain += own.get(requestId)?.startsWith("/ui/") ? dataLength : 0;
    });
    session.on("Network.loadingFinished", ({ requestId, encodedDataLength }) => {
        totals.transfer += own.get(requestId)?.startsWith("/ui/") ? encodedDataLength : 0;
    });
    for (const view of VIEWS) {
        await page.goto(`${host.url}/ui/#/${view}`);
        await page.getByRole("main").waitFor();
        await sleep(1);
    }
    show("Transfer", totals.transfer / 1000);
    show("TransferPlain", totals.plain / 1000);
    await page.context().close();
}

/// From the begin of the navigation to the first number of a measurement; and to the end of a document without anything.
async function measureFirstNumber(browser, host) {
    const times = { FirstNumber: [], EmptyPage: [] };
    for (let load = 0; load < LOADS; ++load) {
        const page = await openPage(browser, host, { path: "/health" });
        times.EmptyPage.push(await page.evaluate(() => performance.getEntriesByType("navigation")[0].domComplete));
        await page.addInitScript(() => {
            const look = () => {
                const shown = [...document.querySelectorAll("[data-measurement]")].some((element) => /\d/.test(element.textContent));
                shown ? (window.firstNumberMs = performance.now()) : requestAnimationFrame(look);
            };
            look();
        });
        await page.goto(`${host.url}/ui/#/live`);
        times.FirstNumber.push(await until(() => page.evaluate(() => window.firstNumberMs), "the first number"));
        await closePage(page);
    }
    Object.entries(times).forEach(([name, list]) => show(name, 1e6 * median(list)));
}

/// The least of some moments: between them the page has messages and points of the present frame.
async function heapOf(session) {
    const sizes = [];
    for (let moment = 0; moment < 10; ++moment) {
        await session.send("HeapProfiler.collectGarbage");
        sizes.push((await session.send("Runtime.getHeapUsage")).usedSize);
        await sleep(0.3);
    }
    return Math.min(...sizes);
}

async function measureViewer(browser, host) {
    show("CpuWithout", (await cpuPerSecond(host, CPU_SECONDS)) / 1e7);
    const page = await openPage(browser, host, { path: "/ui/#/live" });
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    const session = await page.context().newCDPSession(page);
    await sleep(WARM_UP_SECONDS);
    const heap = await heapOf(session);
    show("CpuWith", (await cpuPerSecond(host, CPU_SECONDS)) / 1e7);
    await sleep(60 * minutes - CPU_SECONDS);
    show("HeapAtEnd", (await heapOf(session)) / 2 ** 20);
    show("HeapAtBegin", heap / 2 ** 20);
    await closePage(page);
}

async function measureFanOut(host) {
    const times = { without: [], with: [] };
    for (let round = 0; round < ROUNDS; ++round) {
        times.without.push(await fanOutPerProfile(host, ROUND_SECONDS));
        const requests = Array.from({ length: VIEWERS }, () => ["/profile?points=512&rate=25", "/rangeimage?rows=100&columns=120&rate=10"]
            .map((path) => watch(host, path))).flat();
        await sleep(0.5);
        times.with.push(await fanOutPerProfile(host, ROUND_SECONDS));
        requests.forEach((request) => request.destroy());
        await sleep(0.5);
    }
    show("FanOut", median(times.without));
    show("FanOutWithViewers", median(times.with));
}

const host = await new Host().start("--start", "--rate", String(RATE_HZ));
const plc = setInterval(() => host.registers(0, 2).catch(() => {}), 500); // a client, for the fan-out to work for
await host.number(170);
await measureFanOut(host);
const browser = await launch();
await measureTransfer(browser, host);
await measureFirstNumber(browser, host);
await measureViewer(browser, host);
await browser.close();
await host.end();
clearInterval(plc); // last: the process of the host alone does not keep this program alive
