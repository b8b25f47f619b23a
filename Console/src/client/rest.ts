import { Observable } from "./observable";

/// A refusal of the service: a problem document as of RFC 9457.
export class RestProblem extends Error {
    constructor(
        readonly status: number,
        readonly detail: string,
        readonly causes: string[],
        readonly retryAfterSec: number,
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

const ROLES: Role[] = ["viewer", "operator", "engineer", "administrator"];
const TIMEOUT_MS = 10_000;
const LONG_TIMEOUT_MS = 60_000; // a change may take the service this long

/// The caller; null while it is not known; "needed" when the service asks for a login.
export const session = new Observable<Session | "needed" | null>(null);

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
}

export async function request(method: string, path: string, options: Options = {}): Promise<Reply> {
    const response = await send(method, path, options);
    const text = await response.text().catch(() => {
        throw new ConnectionLost();
    });
    const isJson = (response.headers.get("Content-Type") ?? "").includes("json");
    const json: unknown = isJson && text !== "" ? JSON.parse(text) : null;
    if (!response.ok) {
        if (response.status === 401 && path !== "/session") {
            session.set("needed");
        }
        throw problemOf(response, json);
    }
    return { status: response.status, json, etag: response.headers.get("ETag") ?? "", text };
}

async function send(method: string, path: string, options: Options): Promise<Response> {
    const headers = new Headers({ Accept: "application/hal+json, application/json;q=0.9, */*;q=0.1" });
    const present = session.value;
    if (method !== "GET" && present !== null && present !== "needed" && present.crossSiteToken !== undefined) {
        headers.set("X-CSRF-Token", present.crossSiteToken);
    }
    if (options.ifMatch !== undefined && options.ifMatch !== "") {
        headers.set("If-Match", options.ifMatch);
    }
    const { body } = options;
    const init: RequestInit = {
        method,
        headers,
        credentials: "same-origin",
        cache: "no-store",
        signal: AbortSignal.timeout(method === "GET" ? TIMEOUT_MS : LONG_TIMEOUT_MS),
        ...(body === undefined ? {} : { body: body instanceof Blob ? body : JSON.stringify(body) }),
    };
    try {
        const response = await fetch(path, init);
        setUp(true);
        return response;
    } catch {
        setUp(false);
        throw new ConnectionLost();
    }
}

function problemOf(response: Response, json: unknown): RestProblem {
    const document = (json ?? {}) as { detail?: string; causes?: string[] };
    const retryAfter = Number(response.headers.get("Retry-After") ?? 0);
    const detail = document.detail ?? `The host answered ${response.status} ${response.statusText}.`;
    return new RestProblem(response.status, detail, document.causes ?? [], retryAfter);
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
