import { useEffect, useState } from "preact/hooks";
import { Observable, useObservable } from "./observable";
import { connection, ConnectionLost, findSession, request, RequestEnded, RestProblem, session, setUp } from "./rest";

/// What is known of a document.
export interface Known<T> {
    data: T | undefined;
    problem: RestProblem | undefined;
    etag: string;
    atMs: number; // when it was read last; 0: never
    isLate: boolean; // the next reading of a document with a period has failed or takes too long
}

export interface Resource<T> extends Known<T> {
    isOld: boolean; // the values may differ from the present ones
    reload: () => Promise<void>;
}

/// A change that the host has reported.
export interface Change {
    atMs: number;
    path: string;
    isTree: boolean;
}

const UNKNOWN: Known<never> = { data: undefined, problem: undefined, etag: "", atMs: 0, isLate: false };
const HEARTBEAT_MS = 2_000;
const LOST_HEARTBEAT_MS = 700;
const SETTLING_MS = 400;
const MAX_CHANGES = 500;
const MAX_FRESH_MS = 5_000; // a period of polling and a slow answer

/// The newest changes, oldest first.
export const changes = new Observable<Change[]>([]);

/// A document that components show, read again after each of its changes and after each period.
class Cache {
    readonly known = new Observable<Known<unknown>>(UNKNOWN);
    private readonly periods: number[] = []; // one for each user; 0: none
    private readonly end = new AbortController();
    private timer: ReturnType<typeof setTimeout> | undefined; // reads after the period
    private settling: ReturnType<typeof setTimeout> | undefined; // reads again after a change
    private aging: ReturnType<typeof setTimeout> | undefined; // marks the document as late
    private running: Promise<void> | undefined;
    private next: Promise<void> | undefined;

    constructor(readonly path: string) {}

    use(periodMs: number): () => void {
        this.periods.push(periodMs);
        void this.read();
        return () => {
            this.periods.splice(this.periods.indexOf(periodMs), 1);
            if (this.periods.length === 0) {
                this.close();
            }
        };
    }

    /// Reads the document. The promise ends with a reading that has begun after the call; one reading runs at a time.
    read(): Promise<void> {
        if (this.end.signal.aborted) {
            return Promise.resolve();
        }
        if (this.running === undefined) {
            this.running = this.readNow();
            return this.running;
        }
        this.next ??= this.running.then(() => {
            this.next = undefined;
            return this.read();
        });
        return this.next;
    }

    /// Reads the document now and once more shortly after: while a change runs, documents of other places show the state
    /// before it, and the report comes before its end.
    noteChange(): void {
        void this.read();
        clearTimeout(this.settling);
        this.settling = setTimeout(() => void this.read(), SETTLING_MS);
    }

    /// Ends the reading and all timers.
    private close(): void {
        caches.delete(this.path);
        this.end.abort();
        [this.timer, this.settling, this.aging].forEach(clearTimeout);
    }

    private async readNow(): Promise<void> {
        clearTimeout(this.timer);
        try {
            await this.readOnce();
        } finally {
            this.running = undefined;
            const period = this.period();
            if (period !== undefined) {
                this.timer = setTimeout(() => void this.read(), period);
            }
        }
    }

    private async readOnce(): Promise<void> {
        try {
            const reply = await request("GET", this.path, { signal: this.end.signal });
            this.known.set({ data: reply.json ?? reply.text, problem: undefined, etag: reply.etag, atMs: Date.now(), isLate: false });
            this.age();
        } catch (error) {
            if (error instanceof RestProblem) {
                this.known.set({ ...this.known.value, problem: error });
            } else if (!(error instanceof ConnectionLost || error instanceof RequestEnded)) {
                throw error;
            }
        }
    }

    private age(): void {
        clearTimeout(this.aging);
        const period = this.period();
        if (period !== undefined) {
            this.aging = setTimeout(() => this.known.set({ ...this.known.value, isLate: true }), period + MAX_FRESH_MS);
        }
    }

    /// The shortest period of the users; undefined without one.
    private period(): number | undefined {
        const periods = this.periods.filter((one) => one > 0);
        return periods.length === 0 ? undefined : Math.min(...periods);
    }
}

const caches = new Map<string, Cache>();

function cacheOf(path: string): Cache {
    const found = caches.get(path);
    if (found !== undefined) {
        return found;
    }
    const made = new Cache(path);
    caches.set(path, made);
    return made;
}

const NO_CACHE = new Observable<Known<unknown>>(UNKNOWN);

/// The document at `path`, as it is now. With a period it is also read again after that time. Without a path it stays unknown.
export function useResource<T>(path: string | null, periodMs = 0): Resource<T> {
    const [cache, setCache] = useState<Cache | null>(null);
    useEffect(() => {
        if (path === null || session.value === "needed") {
            setCache(null);
            return;
        }
        const used = cacheOf(path);
        setCache(used);
        return used.use(periodMs);
    }, [path, periodMs]);
    const isCurrent = cache !== null && cache.path === path;
    const known = useObservable(isCurrent ? cache.known : NO_CACHE) as Known<T>;
    const { isUp } = useObservable(connection);
    const isRefused = known.problem !== undefined && known.data !== undefined;
    return { ...known, isOld: !isUp || known.isLate || isRefused, reload: async () => void (isCurrent && (await cache.read())) };
}

/// Reads every shown document again.
export function reloadAll(): void {
    for (const cache of caches.values()) {
        void cache.read();
    }
}

function takeChange(path: string, isTree: boolean): void {
    changes.set([...changes.value.slice(1 - MAX_CHANGES), { atMs: Date.now(), path, isTree }]);
    for (const cache of caches.values()) {
        const shown = cache.path.split("?")[0] ?? "";
        const isEmbedded = path.startsWith(`${shown}/`) || path === shown;
        if (isEmbedded || (isTree && shown.startsWith(`${path}/`))) {
            cache.noteChange();
        }
    }
}

let stream: EventSource | null = null;

/// Opens the stream of changes. What has changed before it opens, or is missing in it, is read again.
function listen(): void {
    stream?.close();
    const opened = new EventSource("/events");
    let lastId = 0;
    stream = opened;
    opened.onopen = reloadAll;
    opened.onmessage = (message: MessageEvent<string>) => {
        const id = Number(message.lastEventId);
        if (lastId !== 0 && id !== lastId + 1) {
            reloadAll();
        }
        lastId = id;
        const report = JSON.parse(message.data) as { path: string; type: number };
        takeChange(report.path, report.type === 4);
    };
    opened.onerror = () => {
        if (opened === stream) {
            opened.close();
            stream = null; // the heartbeat opens the next one
        }
    };
}

let lastUpTimeSec = 0;

/// Notices a lost connection and a new start of the host, and makes the page current after either.
async function beat(): Promise<void> {
    const wasUp = connection.value.isUp;
    try {
        const health = (await request("GET", "/health")).json as { upTimeSec: number };
        const hasRestarted = health.upTimeSec < lastUpTimeSec;
        lastUpTimeSec = health.upTimeSec;
        if (!wasUp || hasRestarted || session.value === null) {
            await findSession();
        }
        if (!wasUp || hasRestarted) {
            reloadAll();
        }
        if ((stream === null || hasRestarted) && session.value !== "needed" && session.value !== null) {
            listen();
        }
    } catch (error) {
        if (error instanceof ConnectionLost) {
            setUp(false);
        }
    }
    setTimeout(() => void beat(), connection.value.isUp ? HEARTBEAT_MS : LOST_HEARTBEAT_MS);
}

export function startClient(): void {
    session.subscribe(() => {
        if (session.value === "needed") {
            stream?.close();
            stream = null;
        }
    });
    void beat();
}
