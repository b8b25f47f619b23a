import { hrefOf } from "../../client/route";
import { type Resource, useResource } from "../../client/resources";
import { Card, Light, Missing, Time, Value } from "../../parts/basics";
import { durationText } from "../../parts/format";
import { type ControlList, stateOf } from "../services/controls";
import { AuthorityCard } from "./AuthorityCard";
import { remedyFor } from "./remedies";
import { OutputsCard, SensorCard } from "./SensorCard";

interface Health {
    status: "ok" | "faulty";
    faults: string[];
    upTimeSec: number;
}

export interface Problems {
    problems: { severity: "warning" | "error"; source: string; text: string; since: string }[];
}

const HEALTH_MS = 2_000;
const PROBLEMS_MS = 5_000;
const CONTROLS_MS = 10_000;

/// Is it well, and what runs?
export function Overview() {
    const health = useResource<Health>("/health", HEALTH_MS);
    const problems = useResource<Problems>("/problems", PROBLEMS_MS);
    const controls = useResource<ControlList>("/controls", CONTROLS_MS);
    return (
        <div class="grid wide-grid">
            <SensorCard />
            <HealthCard health={health} problems={problems} />
            <ServicesCard controls={controls} />
            <OutputsCard />
            <AuthorityCard />
            <ProblemsCard problems={problems} />
        </div>
    );
}

function HealthCard({ health, problems }: { health: Resource<Health>; problems: Resource<Problems> }) {
    const { data } = health;
    if (data === undefined || problems.data === undefined) {
        return <Card title="Health"><Missing problem={health.problem ?? problems.problem} /></Card>;
    }
    const count = problems.data.problems.length;
    return (
        <Card title="Health" isOld={health.isOld || problems.isOld}>
            <p class="big">
                {data.status === "faulty" ? <Light tone="bad">A part of the host stands still</Light>
                    : count === 0 ? <Light tone="good">All is well</Light>
                    : <Light tone="warn">{count === 1 ? "1 problem" : `${count} problems`}</Light>}
            </p>
            {data.faults.map((fault) => <p key={fault} class="refusal">{fault}</p>)}
            <dl class="values">
                <Value name="Host runs since"><Time ms={startOf(data.upTimeSec, health.atMs)} /></Value>
                <Value name="Up-time"><span class="number">{durationText(data.upTimeSec)}</span></Value>
            </dl>
        </Card>
    );
}

/// The time of the start, to ten seconds: a number that is read anew does not move it.
function startOf(upTimeSec: number, atMs: number): number {
    return Math.round((atMs / 1000 - upTimeSec) / 10) * 10_000;
}

function ServicesCard({ controls }: { controls: Resource<ControlList> }) {
    const list = controls.data?._embedded?.item;
    return (
        <Card title="Services" isOld={controls.isOld}>
            {list === undefined ? <Missing problem={controls.problem} /> : (
                <ul class="list">
                    {list.map((control) => {
                        const state = stateOf(control);
                        return (
                            <li key={control.id}>
                                <a href={hrefOf("services", control.id)}>{control.displayName}</a>
                                <Light tone={state.tone}>{state.text}</Light>
                            </li>
                        );
                    })}
                </ul>
            )}
        </Card>
    );
}

export function ProblemsCard({ problems }: { problems: Resource<Problems> }) {
    const list = problems.data?.problems;
    return (
        <Card title="Problems" isOld={problems.isOld} class="wide">
            {list === undefined ? <Missing problem={problems.problem} />
                : list.length === 0 ? <p class="quiet">There is no open problem.</p>
                : (
                    <ul class="list problems">
                        {list.map((one) => (
                            <li key={one.since + one.text}>
                                <Light tone={one.severity === "error" ? "bad" : "warn"}>{one.source}</Light>
                                <div>
                                    <p>{one.text}</p>
                                    <p class="quiet">{remedyFor(one.text)}</p>
                                </div>
                                <Time ms={Date.parse(one.since)} />
                            </li>
                        ))}
                    </ul>
                )}
        </Card>
    );
}
