import { useId, useState } from "preact/hooks";
import { mayActAs, RestProblem, type Role, sentenceOf } from "../client/rest";
import { membersOf, type Schema, titleOf } from "./schema";

type Values = Record<string, unknown>;

interface Props {
    schema: Schema;
    values: Values;
    needs: Role;
    save: (changed: Values) => Promise<void>;
    label: string;
}

/// A form for the values of an object, made from its schema.
///
/// Shows the values as they are until the person changes one; a change by somebody else then does not touch the inputs.
/// `save` gets the changed members. A refusal that begins with the title of a value stands beside it.
export function Form(props: Props) {
    const members = membersOf(props.schema).filter(([, member]) => member.used !== false);
    const shown = members.filter(([, member]) => isShowable(member));
    const rest = members.filter(([, member]) => !isShowable(member));
    const { edited, edit, reset, refusal, isBusy, submit } = useEdits(shown, props.save);
    const id = useId();
    const place = refusal === null ? undefined : memberOf(shown, refusal);
    const isAllowed = mayActAs(props.needs);
    const hasEdits = Object.keys(edited).length > 0;
    return (
        <form class="form" onSubmit={submit} aria-label={props.label} noValidate>
            {shown.map(([key, member]) => (
                <Field
                    key={key}
                    id={`${id}-${key}`}
                    title={titleOf(key, member)}
                    schema={member}
                    value={edited[key] ?? props.values[key]}
                    isDisabled={!isAllowed}
                    refusal={place === key && refusal !== null ? sentenceOf(refusal) : ""}
                    edit={(value) => edit(key, value)}
                />
            ))}
            {rest.length > 0 && (
                <p class="quiet wide">Not shown here: {rest.map(([key, member]) => titleOf(key, member)).join(", ")}.</p>
            )}
            {refusal !== null && place === undefined && <p class="refusal wide" role="alert">{sentenceOf(refusal)}</p>}
            <div class="row wide">
                <button type="submit" class="primary" disabled={!isAllowed || !hasEdits || isBusy}>Save</button>
                <button type="button" disabled={!hasEdits || isBusy} onClick={reset}>Discard changes</button>
                {isBusy && <progress aria-label="Under way" />}
                {!isAllowed && <span class="quiet">A change needs the role {props.needs}.</span>}
            </div>
        </form>
    );
}

/// What the person has changed and not saved, and the refusal of the last try to save it.
function useEdits(members: [string, Schema][], save: Props["save"]) {
    const [edited, setEdited] = useState<Record<string, string | boolean>>({});
    const [refusal, setRefusal] = useState<Error | null>(null);
    const [isBusy, setBusy] = useState(false);
    const edit = (key: string, value: string | boolean) => setEdited((present) => ({ ...present, [key]: value }));
    const reset = () => {
        setEdited({});
        setRefusal(null);
    };
    const submit = (event: Event) => {
        event.preventDefault();
        setBusy(true);
        const changed = Object.fromEntries(members.filter(([key]) => key in edited).map(([key, member]) => [key, valueOf(edited[key], member)]));
        save(changed).then(reset, setRefusal).finally(() => setBusy(false));
    };
    return { edited, edit, reset, refusal, isBusy, submit };
}

/// Whether the form has an input for values of this kind.
function isShowable(schema: Schema): boolean {
    return ["boolean", "integer", "number", "string"].includes(schema.type ?? "");
}

function valueOf(text: string | boolean | undefined, schema: Schema): unknown {
    if (typeof text === "boolean" || text === undefined || schema.type === "string") {
        return text;
    }
    const number = Number(text);
    return text.trim() === "" || Number.isNaN(number) ? text : number; // the service says what is wrong with a text
}

/// The value that a refusal is about.
function memberOf(members: [string, Schema][], refusal: Error): string | undefined {
    const sentences = refusal instanceof RestProblem ? [refusal.detail, ...refusal.causes] : [];
    const isAbout = (key: string, schema: Schema) =>
        sentences.some((one) => one.startsWith(titleOf(key, schema)) || one.includes(`'${key}'`) || one.includes(`.${key} `));
    return members.find(([key, schema]) => isAbout(key, schema))?.[0];
}

interface FieldProps {
    id: string;
    title: string;
    schema: Schema;
    value: unknown;
    isDisabled: boolean;
    refusal: string;
    edit: (value: string | boolean) => void;
}

function Field(props: FieldProps) {
    const { id, title, schema, refusal } = props;
    const hint = hintOf(schema);
    const described = [hint !== "" ? `${id}-hint` : "", refusal !== "" ? `${id}-refusal` : ""].filter((one) => one !== "").join(" ");
    return (
        <div class="field">
            <label for={id}>{title}</label>
            <div class="entry">
                <Entry {...props} described={described} />
                {schema.units !== undefined && <span class="unit">{schema.units}</span>}
            </div>
            {hint !== "" && <span class="quiet hint" id={`${id}-hint`}>{hint}</span>}
            {refusal !== "" && <span class="refusal" id={`${id}-refusal`} role="alert">{refusal}</span>}
        </div>
    );
}

function Entry({ id, schema, value, isDisabled, refusal, edit, described }: FieldProps & { described: string }) {
    const common = {
        id,
        disabled: isDisabled || schema.readOnly === true,
        "aria-describedby": described === "" ? undefined : described,
        "aria-invalid": refusal !== "",
    };
    if (schema.type === "boolean") {
        return <input {...common} type="checkbox" checked={value === true} onChange={(event) => edit(event.currentTarget.checked)} />;
    }
    if (schema.enum !== undefined) {
        return (
            <select {...common} value={String(value)} onChange={(event) => edit(event.currentTarget.value)}>
                {choicesOf(schema, value).map(([choice, text]) => <option key={choice} value={choice}>{text}</option>)}
            </select>
        );
    }
    const isNumber = schema.type !== "string";
    const text = {
        ...common,
        spellcheck: false,
        value: value === undefined || value === null ? "" : String(value),
        onInput: (event: { currentTarget: HTMLInputElement }) => edit(event.currentTarget.value),
    };
    if (schema.writeOnly === true) {
        return <input {...text} type="password" size={28} autocomplete="new-password" />;
    }
    return <input {...text} type="text" inputMode={isNumber ? "decimal" : "text"} size={isNumber ? 12 : 28} autocomplete="off" />;
}

/// The choices with their texts. A present value that is none of them stands first, so that the form shows what is.
function choicesOf(schema: Schema, value: unknown): [string, string][] {
    const choices = (schema.enum ?? []).map((choice, index): [string, string] => [String(choice), schema.enumText?.[index] ?? String(choice)]);
    const present = String(value);
    return choices.some(([choice]) => choice === present) ? choices : [[present, value === undefined ? "" : present], ...choices];
}

/// The range or the length that a value may have.
function hintOf(schema: Schema): string {
    const { minimum, maximum, maxLength } = schema;
    if (schema.enum !== undefined || schema.type === "boolean") {
        return "";
    }
    if (minimum !== undefined && maximum !== undefined) {
        return `${minimum} to ${maximum}`;
    }
    if (minimum !== undefined) {
        return `${minimum} or more`;
    }
    if (maximum !== undefined) {
        return `${maximum} or less`;
    }
    return maxLength !== undefined ? `at most ${maxLength} bytes` : "";
}
