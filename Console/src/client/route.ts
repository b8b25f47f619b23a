import { Observable } from "./observable";

/// The view and the selection, as the address of the page shows them: "#/registers/ModbusTcp?address=170".
export interface Route {
    view: string;
    item: string; // what is selected; empty: nothing
    query: URLSearchParams;
}

function read(): Route {
    const [path = "", query = ""] = location.hash.replace(/^#\/?/, "").split("?");
    const [view = "", item = ""] = path.split("/");
    return { view: view === "" ? "overview" : view, item: decoded(item), query: new URLSearchParams(query) };
}

function decoded(text: string): string {
    try {
        return decodeURIComponent(text);
    } catch {
        return text;
    }
}

export const route = new Observable<Route>(read());

addEventListener("hashchange", () => route.set(read()));

/// The address of a view with a selection. Members of the query without a value are left out.
export function hrefOf(view: string, item = "", query: Record<string, string> = {}): string {
    const members = Object.entries(query).filter(([, value]) => value !== "");
    const text = members.length === 0 ? "" : `?${new URLSearchParams(members).toString()}`;
    return `#/${view}${item === "" ? "" : `/${encodeURIComponent(item)}`}${text}`;
}

/// Changes members of the present query without a new entry in the browser's history.
export function setQuery(members: Record<string, string>): void {
    const present = route.value;
    const query = { ...Object.fromEntries(present.query), ...members };
    history.replaceState(null, "", hrefOf(present.view, present.item, query));
    route.set(read());
}
