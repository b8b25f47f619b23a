import type { JSX } from "preact";
import { useObservable } from "../../client/observable";
import { request } from "../../client/rest";
import { route } from "../../client/route";
import { type Resource, useResource } from "../../client/resources";
import { ActionButton, Card, Light, Missing, saveValues, Tabs, tell } from "../../parts/basics";
import { Form } from "../../parts/Form";
import { numberText } from "../../parts/format";
import { membersOf, type Schema, titleOf } from "../../parts/schema";
import { type Control, type ControlList, stateOf } from "./controls";

const CONTROLS_MS = 10_000;
const METRICS_MS = 1_000;

/// The services: their states, and the parameters and metrics of the chosen one.
export function Services() {
    const controls = useResource<ControlList>("/controls", CONTROLS_MS);
    const { item } = useObservable(route);
    const list = controls.data?._embedded?.item;
    if (list === undefined) {
        return <Card title="Services"><Missing problem={controls.problem} /></Card>;
    }
    const chosen = list.find((control) => control.id === item) ?? list[0];
    return (
        <div class="stack">
            <Tabs label="Services" view="services" chosen={chosen?.id ?? ""} parts={list.map((control) => ({ id: control.id, title: <TabTitle control={control} /> }))} />
            {chosen === undefined ? <p>No plug-in offers a service.</p> : <Service key={chosen.id} id={chosen.id} />}
        </div>
    );
}

function TabTitle({ control }: { control: Control }) {
    const state = stateOf(control);
    return <>{control.displayName} <Light tone={state.tone}>{state.text}</Light></>;
}

function Service({ id }: { id: string }) {
    const path = `/controls/${encodeURIComponent(id)}`;
    const control = useResource<Control>(`${path}?schema=true`);
    const { data } = control;
    if (data === undefined) {
        return <Card title={id}><Missing problem={control.problem} /></Card>;
    }
    return (
        <>
            <StateCard path={path} control={control} data={data} />
            <div class="grid">
                <ParametersCard path={path} control={control} data={data} />
                <MetricsCard path={path} />
            </div>
        </>
    );
}

interface Shown {
    path: string;
    control: Resource<Control>;
    data: Control;
}

function StateCard({ path, control, data }: Shown) {
    const state = stateOf(data);
    const change = async (enabled: boolean) => {
        await request("PUT", path, { body: { enabled } });
        await control.reload();
        tell(`${data.displayName} is ${enabled ? "enabled" : "disabled"}.`);
    };
    return (
        <Card
            title={data.displayName}
            isOld={control.isOld}
            actions={data.enabled
                ? <ActionButton needs="engineer" action={() => change(false)}>Disable</ActionButton>
                : <ActionButton needs="engineer" class="primary" action={() => change(true)}>Enable</ActionButton>}
        >
            <p class="big" role="status"><Light tone={state.tone}>{state.text}</Light></p>
        </Card>
    );
}

function ParametersCard({ path, control, data }: Shown) {
    const schema = data._schema?.properties?.["parameters"];
    const values = data.parameters;
    if (schema === undefined || values === undefined) {
        return <Card title="Parameters"><p class="quiet">The service has no parameters.</p></Card>;
    }
    const put = async (parameters: Record<string, unknown>, isUndo: boolean) => {
        await request("PUT", path, { body: { parameters }, ...(isUndo ? {} : { ifMatch: control.etag }) });
        await control.reload();
    };
    const save = (changed: Record<string, unknown>) => saveValues(schema, values, changed, put, "The parameters are saved.");
    return (
        <Card title="Parameters" isOld={control.isOld}>
            <Form label="Parameters" schema={schema} values={values} needs="engineer" save={save} />
        </Card>
    );
}

type Metrics = Record<string, unknown> & { _schema?: Schema };

function MetricsCard({ path }: { path: string }) {
    const metrics = useResource<Metrics>(`${path}/metrics?schema=true`, METRICS_MS);
    const { data } = metrics;
    return (
        <Card title="Metrics" isOld={metrics.isOld}>
            {data === undefined ? <Missing problem={metrics.problem} /> : (
                <div class="tablebox" tabIndex={0} role="group" aria-label="Metrics">
                    <table>
                        <tbody>{rowsOf(data._schema ?? {}, data)}</tbody>
                    </table>
                </div>
            )}
        </Card>
    );
}

/// A row for each number and text; members of records follow with their keys.
function rowsOf(schema: Schema, values: Record<string, unknown>, prefix = "") {
    return membersOf(schema).flatMap(([key, member]): JSX.Element[] => {
        const value = values[key];
        if (typeof value === "object" && value !== null) {
            return rowsOf(member, value as Record<string, unknown>, schema.label === undefined ? `${prefix}${key}.` : prefix);
        }
        const title = schema.label === undefined ? titleOf(key, member) : `${titleOf(key, member)} (${schema.label} ${key})`;
        return [
            <tr key={prefix + key}>
                <th scope="row">{title}</th>
                <td class="number" data-metric={prefix + key}>
                    {typeof value === "number" ? numberText(value) : String(value ?? "")}
                    {member.units !== undefined && <span class="unit"> {member.units}</span>}
                </td>
            </tr>,
        ];
    });
}
