import { request } from "../../client/rest";
import { useResource } from "../../client/resources";
import { saveValues } from "../../parts/basics";
import { Form } from "../../parts/Form";
import { membersOf, type Schema, titleOf } from "../../parts/schema";

type Document = Record<string, Record<string, unknown>> & { _schema?: Schema };

const PATH = "/sensor/limits";

/// The limits of each measurement as a form. They are part of the job.
export function LimitsCard() {
    const limits = useResource<Document>(`${PATH}?schema=true`);
    const { data } = limits;
    if (data === undefined || data._schema === undefined) {
        return null;
    }
    const put = async (name: string, values: Record<string, unknown>, isUndo: boolean) => {
        await request("PUT", PATH, { body: { [name]: values }, ...(isUndo ? {} : { ifMatch: limits.etag }) });
        await limits.reload();
    };
    return (
        <details class="card">
            <summary>Limits</summary>
            <div class="grid">
                {membersOf(data._schema).map(([name, schema]) => {
                    const title = titleOf(name, schema);
                    const values = data[name] ?? {};
                    const save = (changed: Record<string, unknown>) =>
                        saveValues(schema, values, changed, (next, isUndo) => put(name, next, isUndo), `The limits of ${title} are saved.`);
                    return (
                        <div key={name}>
                            <h3>{title}</h3>
                            <Form label={`Limits of ${title}`} schema={schema} values={values} needs="engineer" save={save} />
                        </div>
                    );
                })}
            </div>
        </details>
    );
}
