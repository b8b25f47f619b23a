import { useEffect, useRef, useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { mayActAs, session } from "../../client/rest";
import { route, setQuery } from "../../client/route";
import { changes, useResource } from "../../client/resources";
import type { Operations } from "../../client/sensor";
import { Card, Light, Missing, Time, type Tone } from "../../parts/basics";
import type { Problems } from "../overview/Overview";
import { remedyFor } from "../overview/remedies";

interface LogLines {
    lines: { time: string; level: string; place: string; text: string }[];
}

interface Happening {
    key: string;
    kind: Kind;
    atMs: number;
    tone: Tone;
    text: string;
    detail: string;
}

type Kind = "problem" | "operation" | "change" | "log";

const KINDS: [Kind, string][] = [["problem", "Problems"], ["operation", "Operations"], ["change", "Changes"], ["log", "Log"]];
const LIST_MS = 3_000;
const MAX_SHOWN = 300;

/// What has happened: problems, operations, changes and warnings of the log, the newest last.
export function Events() {
    const problems = useResource<Problems>("/problems", LIST_MS);
    const operations = useResource<Operations>("/operations", LIST_MS);
    useObservable(session);
    const mayReadLog = mayActAs("engineer"); // refused requests would fill the trail
    const log = useResource<LogLines>(mayReadLog ? "/log" : null, LIST_MS);
    const seen = useObservable(changes);
    const { query } = useObservable(route);
    const [isFollowing, setFollowing] = useState(true);
    const hidden = new Set((query.get("hide") ?? "").split(",").filter((one) => one !== ""));
    const text = query.get("text") ?? "";
    const all = [
        ...ofProblems(problems.data),
        ...ofOperations(operations.data),
        ...seen.map((one, index): Happening => ({
            key: `c${one.atMs}-${index}`, kind: "change", atMs: one.atMs, tone: "idle",
            text: one.isTree ? `${one.path} and what is below it may have changed` : `${one.path} has changed`, detail: "",
        })),
        ...ofLog(log.data),
    ].sort((one, other) => one.atMs - other.atMs);
    const words = text.toLowerCase();
    const shown = all.filter((one) => !hidden.has(one.kind) && `${one.text} ${one.detail}`.toLowerCase().includes(words)).slice(-MAX_SHOWN);
    const toggle = (kind: Kind) => {
        hidden.has(kind) ? hidden.delete(kind) : hidden.add(kind);
        setQuery({ hide: [...hidden].join(",") });
    };
    return (
        <Card
            title="What has happened"
            isOld={problems.isOld || operations.isOld || log.isOld}
            actions={<button type="button" aria-pressed={isFollowing} onClick={() => setFollowing(!isFollowing)}>Follow</button>}
        >
            <fieldset class="row plain">
                <legend class="hidden">Show</legend>
                {KINDS.map(([kind, title]) => (
                    <label key={kind} class="row tight">
                        <input type="checkbox" checked={!hidden.has(kind)} onChange={() => toggle(kind)} />
                        {title}
                    </label>
                ))}
                <label class="row tight">
                    Search
                    <input type="search" value={text} onInput={(event) => setQuery({ text: event.currentTarget.value })} />
                </label>
            </fieldset>
            {!mayReadLog && <p class="quiet">The lines of the log need the role engineer.</p>}
            {problems.data === undefined ? <Missing problem={problems.problem} /> : <Lines happenings={shown} isFollowing={isFollowing} />}
        </Card>
    );
}

function Lines({ happenings, isFollowing }: { happenings: Happening[]; isFollowing: boolean }) {
    const box = useRef<HTMLDivElement>(null);
    const last = happenings.at(-1)?.key;
    useEffect(() => {
        if (isFollowing && box.current !== null) {
            box.current.scrollTop = box.current.scrollHeight;
        }
    }, [last, isFollowing]);
    return (
        <div class="tablebox events" ref={box} tabIndex={0} role="group" aria-label="Events">
            {happenings.length === 0 ? <p class="quiet">Nothing to show.</p> : (
                <table>
                    <thead>
                        <tr>
                            <th scope="col">Time</th>
                            <th scope="col">Kind</th>
                            <th scope="col">Text</th>
                        </tr>
                    </thead>
                    <tbody>
                        {happenings.map((one) => (
                            <tr key={one.key}>
                                <td><Time ms={one.atMs} /></td>
                                <td><Light tone={one.tone}>{one.kind}</Light></td>
                                <td>{one.text}{one.detail !== "" && <span class="quiet"> {one.detail}</span>}</td>
                            </tr>
                        ))}
                    </tbody>
                </table>
            )}
        </div>
    );
}

function ofProblems(problems: Problems | undefined): Happening[] {
    return (problems?.problems ?? []).map((one) => ({
        key: `p${one.since}${one.text}`, kind: "problem", atMs: Date.parse(one.since), tone: one.severity === "error" ? "bad" : "warn",
        text: one.text, detail: remedyFor(one.text),
    }));
}

const RESULT_TONES: Record<string, Tone> = { running: "warn", done: "good", failed: "bad" };

function ofOperations(operations: Operations | undefined): Happening[] {
    return (operations?.operations ?? []).map((one) => ({
        key: `o${one.number}${one.since}`, kind: "operation", atMs: Date.parse(one.since), tone: RESULT_TONES[one.result] ?? "idle",
        text: `${one.what}${one.argument === "" ? "" : ` of ${one.argument}`}: ${one.result}${one.text === "" ? "" : `, ${one.text}`}`,
        detail: `${one.seconds.toFixed(1)} s, by ${one.who}${one.from === "" ? "" : ` from ${one.from}`}`,
    }));
}

function ofLog(log: LogLines | undefined): Happening[] {
    return (log?.lines ?? []).map((one, index) => ({
        key: `l${one.time}${index}`, kind: "log", atMs: Date.parse(one.time), tone: one.level === "error" ? "bad" : "warn",
        text: one.text, detail: one.place,
    }));
}
