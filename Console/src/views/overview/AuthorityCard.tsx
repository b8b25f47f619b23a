import { request } from "../../client/rest";
import { useResource } from "../../client/resources";
import type { SensorState } from "../../client/sensor";
import { Card, Missing, saveValues } from "../../parts/basics";
import { Form } from "../../parts/Form";
import type { Schema } from "../../parts/schema";
import { useSensor } from "./SensorCard";

type Document = Record<string, unknown> & { _schema?: Schema };
type Authority = SensorState["authority"];

const PATH = "/sensor/authority";

/// Who may run the sensor: the present holder, and the settings of the host.
export function AuthorityCard() {
    const settings = useResource<Document>(`${PATH}?schema=true`);
    const sensor = useSensor();
    const { data } = settings;
    const schema = data?._schema;
    if (data === undefined || schema === undefined || sensor.data === undefined) {
        return <Card title="Control authority"><Missing problem={settings.problem ?? sensor.problem} /></Card>;
    }
    const put = async (values: Record<string, unknown>, isUndo: boolean) => {
        await request("PUT", PATH, { body: values, ...(isUndo ? {} : { ifMatch: settings.etag }) });
        await Promise.all([settings.reload(), sensor.reload()]);
    };
    const save = (changed: Record<string, unknown>) => saveValues(schema, data, changed, put, "The control authority is saved.");
    return (
        <Card title="Control authority" isOld={settings.isOld || sensor.isOld}>
            <p role="status">{holderText(sensor.data.authority)}</p>
            <LastCommand authority={sensor.data.authority} />
            <Form label="Control authority" schema={schema} values={data} needs="engineer" save={save} />
        </Card>
    );
}

function holderText({ rest, holder, mayCommand }: Authority): string {
    if (rest === "never") {
        return "PLCs have the authority. The console and programs cannot run the sensor.";
    }
    if (mayCommand) {
        return "Everybody has the authority: the console, programs and PLCs.";
    }
    return `${holder} has the authority, until it sends no command for a time.`;
}

function LastCommand({ authority: { lastCommand } }: { authority: Authority }) {
    if (lastCommand === null) {
        return <p class="quiet">No PLC has sent a command since the start of the host.</p>;
    }
    return <p class="quiet">The last command of a PLC came over {lastCommand.protocol}, <span class="number">{Math.round(lastCommand.secondsAgo)} s</span> ago.</p>;
}
