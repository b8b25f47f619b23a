import { Observable } from "../../client/observable";
import { connection, request, session } from "../../client/rest";

/// A number over time.
export interface Series {
    key: string; // name and labels, as "/metrics" has them
    help: string;
    isCounter: boolean;
    values: (number | null)[]; // one for each time
}

export interface History {
    times: number[]; // seconds since 1970
    series: Map<string, Series>;
}

const PERIOD_MS = 5_000;
const SPAN_SEC = 15 * 60;

/// What "/metrics" has shown since the page was opened, for 15 minutes at most.
export const history = new Observable<History>({ times: [], series: new Map() });

interface Sample {
    key: string;
    help: string;
    isCounter: boolean;
    value: number;
}

/// The numbers of the text format of Prometheus.
export function samplesOf(text: string): Sample[] {
    const helps = new Map<string, string>();
    const counters = new Set<string>();
    const samples: Sample[] = [];
    for (const line of text.split("\n")) {
        const note = /^# (HELP|TYPE) (\S+) (.*)$/.exec(line);
        if (note !== null) {
            const [, kind, name = "", words = ""] = note;
            kind === "HELP" ? helps.set(name, words) : words === "counter" && counters.add(name);
            continue;
        }
        const found = /^([^\s{]+)(\{.*\})? (\S+)/.exec(line);
        if (found !== null) {
            const [, name = "", labels = "", value = ""] = found;
            samples.push({ key: name + labels, help: helpOf(name, helps), isCounter: isCounter(name, counters), value: Number(value) });
        }
    }
    return samples;
}

const PART = /_(sum|count|bucket)$/; // of a histogram or a summary, which has one description

function helpOf(name: string, helps: Map<string, string>): string {
    return helps.get(name) ?? helps.get(name.replace(PART, "")) ?? name;
}

function isCounter(name: string, counters: Set<string>): boolean {
    return counters.has(name) || PART.test(name);
}

function take(samples: Sample[]): void {
    const { times, series } = history.value;
    const now = Date.now() / 1000;
    const cut = times.findIndex((time) => time > now - SPAN_SEC);
    const dropped = cut < 0 ? times.length : cut;
    const nextTimes = [...times.slice(dropped), now];
    const next = new Map<string, Series>();
    const found = new Map(samples.map((sample) => [sample.key, sample]));
    for (const [key, sample] of found) {
        const old = series.get(key)?.values.slice(dropped) ?? new Array<null>(nextTimes.length - 1).fill(null);
        next.set(key, { key, help: sample.help, isCounter: sample.isCounter, values: [...old, sample.value] });
    }
    for (const [key, one] of series) {
        const rest = one.values.slice(dropped);
        if (!found.has(key) && rest.some((value) => value !== null)) {
            next.set(key, { ...one, values: [...rest, null] });
        }
    }
    history.set({ times: nextTimes, series: next });
}

/// The change for each second, where a counter begins anew after a start of the host.
export function ratesOf(times: number[], values: (number | null)[]): (number | null)[] {
    return values.map((value, index) => {
        const before = values[index - 1];
        const seconds = (times[index] ?? 0) - (times[index - 1] ?? 0);
        return index === 0 || value === null || before === null || before === undefined || seconds <= 0 ? null
            : Math.max(0, value >= before ? value - before : value) / seconds;
    });
}

/// Collects from now on, also while other views are shown.
export function startHistory(): void {
    const sample = async () => {
        if (connection.value.isUp && session.value !== null && session.value !== "needed") {
            await request("GET", "/metrics").then((reply) => take(samplesOf(reply.text)), () => {});
        }
        setTimeout(() => void sample(), PERIOD_MS);
    };
    setTimeout(() => void sample(), 1_000);
}
