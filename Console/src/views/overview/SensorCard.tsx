import { useState } from "preact/hooks";
import { request } from "../../client/rest";
import { type Resource, useResource } from "../../client/resources";
import { ALIGNMENTS, type Operation, type SensorState } from "../../client/sensor";
import { ActionButton, Card, Light, Missing, tell, type Tone, Value } from "../../parts/basics";
import { durationText, numberText } from "../../parts/format";

const SENSOR_MS = 1_000;
const STATES: Record<string, { tone: Tone; text: string }> = {
    ready: { tone: "idle", text: "Stands still" },
    running: { tone: "good", text: "Scanning" },
    error: { tone: "bad", text: "Error" },
};

export function useSensor(): Resource<SensorState> {
    return useResource<SensorState>("/sensor", SENSOR_MS);
}

/// Runs a command and waits for the end of its operation. Throws when it fails.
async function runCommand(name: string, body: unknown = {}): Promise<void> {
    let operation = (await request("POST", `/sensor/commands/${name}`, { body })).json as Operation;
    while (operation.result === "running") {
        await new Promise((resolve) => setTimeout(resolve, 200));
        operation = (await request("GET", `/operations/${operation.number}`)).json as Operation;
    }
    if (operation.result === "failed") {
        throw new Error(`The ${operation.what} has failed. ${operation.text}`);
    }
    tell(`The ${operation.what} is done.`);
}

/// The state of the sensor, its rates, and the commands that run it.
export function SensorCard() {
    const sensor = useSensor();
    const { data } = sensor;
    if (data === undefined) {
        return <Card title="Sensor"><Missing problem={sensor.problem} /></Card>;
    }
    const state = STATES[data.state] ?? { tone: "warn", text: `State ${data.state}` };
    return (
        <Card title="Sensor" isOld={sensor.isOld} class="wide">
            <div class="row state">
                <p class="big" role="status"><Light tone={state.tone}>{state.text}</Light></p>
                <Commands data={data} reload={sensor.reload} />
            </div>
            <Authority data={data} />
            <dl class="values">
                <Value name="Job">{data.job}</Value>
                <Value name="Scanner">{data.scanner}, {ALIGNMENTS[data.alignment]}</Value>
                <Value name="Rate" unit="Hz"><span data-sensor="rateHz">{numberText(data.profiles.rateHz, 1)}</span> of {numberText(data.profiles.setRateHz, 1)}</Value>
                <Value name="Profiles"><span data-sensor="taken">{numberText(data.profiles.taken)}</span></Value>
                <Value name="Missed profiles">{numberText(data.profiles.missed)}</Value>
                <Value name="Result sets">{numberText(data.results.sets)}</Value>
                <Value name="Dropped results">{numberText(data.results.dropped)}</Value>
                <Value name="Up-time"><span class="number">{durationText(data.upTimeSec)}</span></Value>
            </dl>
        </Card>
    );
}

function Commands({ data, reload }: { data: SensorState; reload: () => Promise<void> }) {
    const [running, setRunning] = useState("");
    const isRunning = data.state === "running";
    const may = data.authority.mayCommand && data.operation === null && running === "";
    const run = (name: string) => async () => {
        setRunning(name);
        try {
            await runCommand(name);
        } finally {
            setRunning("");
            await reload();
        }
    };
    const commands: [string, string, boolean][] = [
        ["start", "Start", !isRunning], ["stop", "Stop", isRunning], ["align", "Align", !isRunning],
        ["clearAlignment", "Clear alignment", data.alignment === "aligned"], ["trigger", "Trigger", isRunning],
    ];
    return (
        <div class="row" role="group" aria-label="Commands">
            {commands.map(([name, title, fits]) => (
                <ActionButton
                    key={name}
                    needs="operator"
                    class={name === "start" ? "primary" : ""}
                    isDisabled={(!may && running !== name) || !fits}
                    action={run(name)}
                >
                    {title}
                </ActionButton>
            ))}
        </div>
    );
}

/// Why the commands are greyed out, if they are.
function Authority({ data: { authority, operation } }: { data: SensorState }) {
    if (operation !== null) {
        return (
            <p class="quiet">
                Under way: {operation.what}{operation.protocol === null ? "" : `, asked for by ${operation.protocol}`}, for <span class="number">{operation.seconds.toFixed(0)} s</span> <progress aria-label={operation.what} />
            </p>
        );
    }
    if (authority.mayCommand) {
        return null;
    }
    const wait = authority.waitSeconds === null ? "" : ` The console may run it in ${Math.ceil(authority.waitSeconds)} s when no further command comes.`;
    return <p class="quiet">{authority.rest === "never" ? "Only PLCs may run the sensor." : `${authority.holder} runs the sensor.${wait}`}</p>;
}

/// What the outputs drive now.
export function OutputsCard() {
    const { data, isOld } = useSensor();
    if (data === undefined) {
        return null;
    }
    const { digital, analog, serial } = data.outputs;
    return (
        <Card title="Inputs and outputs" isOld={isOld}>
            <ul class="list">
                {data.inputs.map((one) => <Level key={`i${one.index}`} name={`Digital input ${one.index + 1}`} isEnabled={one.enabled} text={one.high ? "high" : "low"} />)}
                {digital.map((one) => <Level key={`d${one.index}`} name={`Digital output ${one.index + 1}`} isEnabled={one.enabled} text={(one.high ? "high" : "low") + pulsesText(one)} />)}
                {analog.map((one) => <Level key={`a${one.index}`} name={`Analog output ${one.index + 1}`} isEnabled={one.enabled} text={`${numberText(one.milliamperes, 3)} mA`} />)}
                {serial.map((one) => <Level key={`s${one.index}`} name={`Serial output ${one.index + 1}`} isEnabled={one.enabled} text={`${numberText(one.bytes)} bytes`} />)}
            </ul>
        </Card>
    );
}

/// A pulse is often too short to be seen.
function pulsesText({ pulses, pulseAgeSec }: { pulses: number; pulseAgeSec: number | null }): string {
    return pulseAgeSec === null ? "" : `, ${numberText(pulses)} ${pulses === 1 ? "pulse" : "pulses"}, the last ${durationText(pulseAgeSec)} ago`;
}

function Level({ name, isEnabled, text }: { name: string; isEnabled: boolean; text: string }) {
    return (
        <li>
            <span>{name}</span>
            <span class={isEnabled ? "number" : "quiet"}>{isEnabled ? text : "off"}</span>
        </li>
    );
}
