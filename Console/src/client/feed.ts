import { connection, problemOf, session, setUp } from "./rest";

/// A message of "/profile" or "/rangeimage": see the page on REST.
export interface FeedMessage {
    frame: number;
    timeUsec: number;
    encoder: bigint;
    rows: number;
    columns: number;
    x0: number;
    spacing: number;
    values: Float32Array;
}

const HEADER_BYTES = 48;
const MAX_MESSAGE_BYTES = 4 * 1024 * 1024;
const SILENCE_MS = 4_000; // the host sends a message in each second
const RETRY_MS = 1_000;
const READY_MS = 50; // until the caller is known

/// What takes a stream.
export interface FeedTaker {
    take: (message: FeedMessage, isFirst: boolean) => void; // the first of a connection repeats what was before it
    refuse: (sentence: string) => void; // why there is no stream; empty: there is one
}

/// Splits the bytes of a stream into messages.
export class FeedReader {
    private waiting = new Uint8Array(0);

    /// Returns the messages that `bytes` complete. Throws when the bytes are no such stream.
    take(bytes: Uint8Array): FeedMessage[] {
        const joined = new Uint8Array(this.waiting.length + bytes.length);
        joined.set(this.waiting);
        joined.set(bytes, this.waiting.length);
        const messages: FeedMessage[] = [];
        let start = 0;
        while (joined.length - start >= 8) {
            const length = new DataView(joined.buffer, start).getUint32(4, true);
            if (length < HEADER_BYTES || length > MAX_MESSAGE_BYTES) {
                throw new Error("The stream has a message of an impossible length.");
            }
            if (joined.length - start < length) {
                break;
            }
            messages.push(messageOf(joined.slice(start, start + length)));
            start += length;
        }
        this.waiting = joined.slice(start);
        return messages;
    }
}

function messageOf(bytes: Uint8Array): FeedMessage {
    const view = new DataView(bytes.buffer);
    return {
        frame: Number(view.getBigUint64(8, true)),
        timeUsec: Number(view.getBigUint64(16, true)),
        encoder: view.getBigInt64(24, true),
        rows: view.getUint32(32, true),
        columns: view.getUint32(36, true),
        x0: view.getFloat32(40, true),
        spacing: view.getFloat32(44, true),
        values: new Float32Array(bytes.buffer, HEADER_BYTES),
    };
}

/// Reads a stream until the returned function is called, and begins anew when it ends.
export function openFeed(path: string, taker: FeedTaker): () => void {
    const end = new AbortController();
    void (async () => {
        while (!end.signal.aborted) {
            const isReady = connection.value.isUp && session.value !== null && session.value !== "needed";
            if (isReady) {
                await readFeed(path, taker, end.signal).catch(() => {}); // a cut stream: the loop opens the next one
            }
            await new Promise((resolve) => setTimeout(resolve, isReady ? RETRY_MS : READY_MS));
        }
    })();
    return () => end.abort();
}

async function readFeed(path: string, taker: FeedTaker, end: AbortSignal): Promise<void> {
    const cut = new AbortController();
    const close = () => cut.abort();
    end.addEventListener("abort", close);
    let silence = setTimeout(close, SILENCE_MS);
    try {
        const response = await fetch(path, { headers: { Accept: "application/octet-stream" }, signal: cut.signal, cache: "no-store" });
        taker.refuse(response.ok ? "" : problemOf(response, await response.json().catch(() => null)).detail);
        const source = response.ok ? response.body?.getReader() : undefined;
        const reader = new FeedReader();
        let isFirst = true;
        while (source !== undefined) {
            const { done, value } = await source.read();
            if (done) {
                break;
            }
            clearTimeout(silence);
            silence = setTimeout(close, SILENCE_MS);
            setUp(true);
            for (const message of reader.take(value).filter(({ rows }) => rows > 0)) {
                taker.take(message, isFirst);
                isFirst = false;
            }
        }
    } finally {
        clearTimeout(silence);
        end.removeEventListener("abort", close);
        close();
    }
}
