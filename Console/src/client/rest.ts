import { Observable } from "./observable";

/// A refusal of the service: a problem document as of RFC 9457.
export class RestProblem extends Error {
    constructor(
        readonly status: number,
        readonly detail: string,
        readonly causes: string[],
    ) {
        super(detail);
    }
}

/// The host did not answer.
export class ConnectionLost extends Error {
    constructor() {
        super("The host does not answer.");
    }
}

/// The caller has ended the request.
export class RequestEnded extends Error {
    constructor() {
        super("The request was ended.");
    }
}

export interface Reply {
    status: number;
    json: unknown;
    etag: string;
    text: string;
}

export interface Session {
    caller: string;
    role: Role;
    user?: string;
    id?: string;
    crossSiteToken?: string;
}

export type Role = "viewer" | "operator" | "engineer" | "administrator";

export const ROLES: Role[] = ["viewer", "operator", "engineer", "administrator"];
const TIMEOUT_MS = 10_000;
const LONG_TIMEOUT_MS = 60_000; // a change may take the service this long

/// The caller; null while it is not known; "needed" when the service asks for a login.
export const session = new Observable<Session | "needed" | null>(null);

/// What the host tells everybody before a login.
export const loginNotice = new Observable("");

/// Whether the host answers, and since when.
export const connection = new Observable<{ isUp: boolean; sinceMs: number }>({ isUp: true, sinceMs: Date.now() });

export function setUp(isUp: boolean): void {
    if (isUp !== connection.value.isUp) {
        connection.set({ isUp, sinceMs: Date.now() });
    }
}

/// Whether the caller's role suffices. The service decides; this only greys buttons out.
export function mayActAs(needed: Role): boolean {
    const present = session.value;
    return present !== null && present !== "needed" && ROLES.indexOf(present.role) >= ROLES.indexOf(needed);
}

export interface Options {
    ifMatch?: string | undefined;
    body?: unknown; // JSON, or a Blob that is sent as it is
    signal?: AbortSignal; // ends the request
}

/// Throws `RestProblem` for a refusal, `ConnectionLost` without an answer, and `RequestEnded`.
export async function request(method: string, path: string, options: Options = {}): Promise<Reply> {
    const { response, text } = await send(method, path, options);
    const json = documentOf(response, text);
    if (!response.ok) {
        if (response.status === 401) {
            noteStranger(path, json);
        }
        throw problemOf(response, json);
    }
    return { status: response.status, json, etag: response.headers.get("ETag") ?? "", text };
}

async function send(method: string, path: string, options: Options): Promise<{ response: Response; text: string }> {
    const cut = new AbortController();
    const abort = () => cut.abort();
    const timer = setTimeout(abort, method === "GET" ? TIMEOUT_MS : LONG_TIMEOUT_MS);
    options.signal?.addEventListener("abort", abort);
    try {
        const response = await fetch(path, { ...initOf(method, options), signal: cut.signal });
        const text = await response.text();
        setUp(true);
        return { response, text };
    } catch {
        if (options.signal?.aborted === true) {
            throw new RequestEnded();
        }
        setUp(false);
        throw new ConnectionLost();
    } finally {
        clearTimeout(timer);
        options.signal?.removeEventListener("abort", abort);
    }
}

function initOf(method: string, { ifMatch, body }: Options): RequestInit {
    const headers = new Headers({ Accept: "application/hal+json, application/json;q=0.9, */*;q=0.1" });
    const present = session.value;
    if (method !== "GET" && present !== null && present !== "needed" && present.crossSiteToken !== undefined) {
        headers.set("X-CSRF-Token", present.crossSiteToken);
    }
    if (ifMatch !== undefined && ifMatch !== "") {
        headers.set("If-Match", ifMatch);
    }
    return {
        method,
        headers,
        credentials: "same-origin",
        cache: "no-store",
        ...(body === undefined ? {} : { body: body instanceof Blob ? body : JSON.stringify(body) }),
    };
}

function documentOf(response: Response, text: string): unknown {
    const isJson = (response.headers.get("Content-Type") ?? "").includes("json");
    try {
        return isJson && text !== "" ? JSON.parse(text) : null;
    } catch {
        throw new RestProblem(response.status, "The host sent a document that cannot be read.", []);
    }
}

/// The service knows no caller of the request for `path`.
function noteStranger(path: string, json: unknown): void {
    loginNotice.set((json as { notice?: string } | null)?.notice ?? loginNotice.value);
    if (path !== "/session") {
        session.set("needed");
    }
}

/// The refusal that an answer is.
export function problemOf(response: Response, json: unknown): RestProblem {
    const document = (json ?? {}) as { detail?: string; causes?: string[] };
    const detail = document.detail ?? `The host answered ${response.status} ${response.statusText}.`;
    return new RestProblem(response.status, detail, document.causes ?? []);
}

/// A sentence for the user about a failed request.
export function sentenceOf(error: unknown): string {
    if (error instanceof RestProblem && error.status === 412) {
        return "Somebody else has changed this meanwhile. Look at the present values and try again.";
    }
    return error instanceof Error ? error.message : String(error);
}

/// Asks the service who the caller is.
export async function findSession(): Promise<void> {
    try {
        session.set((await request("GET", "/session")).json as Session);
    } catch (error) {
        if (error instanceof RestProblem && error.status === 401) {
            session.set("needed");
        }
    }
}

export async function logIn(name: string, password: string): Promise<void> {
    await request("POST", "/session", { body: { name, password } });
    await findSession();
}

export async function logOut(): Promise<void> {
    await request("DELETE", "/session");
    session.set("needed");
}
