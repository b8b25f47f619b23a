import { request } from "../../client/rest";
import { useResource } from "../../client/resources";
import { tell } from "../../parts/basics";
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
    const put = async (name: string, values: Record<string, unknown>) => {
        await request("PUT", PATH, { body: { [name]: values } });
        await limits.reload();
    };
    return (
        <details class="card">
            <summary>Limits</summary>
            <div class="grid">
                {membersOf(data._schema).map(([name, schema]) => {
                    const values = data[name] ?? {};
                    const save = async (changed: Record<string, unknown>) => {
                        const before = Object.fromEntries(Object.keys(changed).map((key) => [key, values[key]]));
                        await put(name, changed);
                        tell(`The limits of ${titleOf(name, schema)} are saved.`, () => put(name, before));
                    };
                    return (
                        <div key={name}>
                            <h3>{titleOf(name, schema)}</h3>
                            <Form label={`Limits of ${titleOf(name, schema)}`} schema={schema} values={values} needs="engineer" save={save} />
                        </div>
                    );
                })}
            </div>
        </details>
    );
}
