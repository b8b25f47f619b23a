import { useEffect, useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { route, setQuery } from "../../client/route";
import { useResource } from "../../client/resources";
import { Card, Missing } from "../../parts/basics";
import { Ago, Head } from "./fields";

interface Trail {
    entries: { id: number; time: string; who: string; from: string; what: string; result: string; count?: number }[];
    _links: { next?: { href: string }; last?: { href: string } };
}

/// What was done, the newest first.
export function TrailPart() {
    const { query } = useObservable(route);
    const filters = ["who", "what", "from"] as const;
    const chosen = filters.map((name) => [name, query.get(name) ?? ""] as const).filter(([, value]) => value !== "");
    const first = `/audit?${new URLSearchParams([...chosen.map(([name, value]) => [name, value]), ["limit", "100"]]).toString()}`;
    const start = useResource<Trail>(first);
    const [page, setPage] = useState<string | null>(null);
    const trail = useResource<Trail>(page, 3_000);
    useEffect(() => setPage(start.data === undefined ? null : (start.data._links.last?.href ?? first)), [start.data]);
    useEffect(() => {
        if (trail.data?._links.next !== undefined) {
            setPage(trail.data._links.last?.href ?? null); // the page is full; another one is the newest now
        }
    }, [trail.data]);
    const entries = trail.data?.entries ?? start.data?.entries;
    return (
        <Card title="Trail" isOld={trail.isOld}>
            <div class="row">
                {filters.map((name) => (
                    <label key={name} class="row tight">
                        {name[0]?.toUpperCase() + name.slice(1)}
                        <input type="search" value={query.get(name) ?? ""} onInput={(event) => setQuery({ [name]: event.currentTarget.value })} />
                    </label>
                ))}
            </div>
            {entries === undefined ? <Missing problem={start.problem} /> : (
                <div class="tablebox tall" tabIndex={0} role="group" aria-label="Trail">
                    <table>
                        <Head titles={["Time", "Who", "From", "What", "Result"]} hasButtons={false} />
                        <tbody>
                            {[...entries].reverse().map((one) => (
                                <tr key={one.id}>
                                    <td><Ago text={one.time} /></td>
                                    <td>{one.who}</td>
                                    <td>{one.from}</td>
                                    <td>{one.what}{one.count !== undefined && one.count > 1 && <span class="quiet"> {one.count} times</span>}</td>
                                    <td>{one.result}</td>
                                </tr>
                            ))}
                        </tbody>
                    </table>
                </div>
            )}
        </Card>
    );
}
