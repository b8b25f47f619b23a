import type { ComponentChildren } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import { Observable, useObservable } from "../client/observable";
import { mayActAs, type RestProblem, type Role, sentenceOf } from "../client/rest";
import { hrefOf } from "../client/route";
import { timeText, utcText } from "./format";
import type { Schema } from "./schema";

type Values = Record<string, unknown>;

export type Tone = "good" | "bad" | "warn" | "idle";

const TONE_SIGNS: Record<Tone, string> = { good: "●", bad: "■", warn: "▲", idle: "○" }; // shapes differ, not only colours

/// A state as a light with its name.
export function Light({ tone, children }: { tone: Tone; children: ComponentChildren }) {
    return (
        <span class={`light ${tone}`}>
            <span class="sign" aria-hidden="true">{TONE_SIGNS[tone]}</span>
            {children}
        </span>
    );
}

/// A part of a view with a heading. Its values are greyed out when they are old.
export function Card(props: { title: string; isOld?: boolean; actions?: ComponentChildren; children: ComponentChildren; class?: string }) {
    return (
        <section class={`card ${props.class ?? ""} ${props.isOld === true ? "old" : ""}`} aria-label={props.title}>
            <header>
                <h2>{props.title}</h2>
                {props.isOld === true && <span class="tag">old values</span>}
                <div class="actions">{props.actions}</div>
            </header>
            {props.children}
        </section>
    );
}

/// Links to the parts of a view, of which one is shown.
export function Tabs(props: { label: string; view: string; chosen: string; parts: { id: string; title: ComponentChildren }[] }) {
    return (
        <ul class="tabs" aria-label={props.label}>
            {props.parts.map(({ id, title }) => (
                <li key={id}>
                    <a href={hrefOf(props.view, id)} aria-current={id === props.chosen ? "true" : undefined}>{title}</a>
                </li>
            ))}
        </ul>
    );
}

/// A value with its name and unit.
export function Value({ name, unit, children }: { name: string; unit?: string; children: ComponentChildren }) {
    return (
        <div class="value">
            <dt>{name}</dt>
            <dd>
                {children}
                {unit !== undefined && <span class="unit"> {unit}</span>}
            </dd>
        </div>
    );
}

/// A time in the local zone, with UTC as its title.
export function Time({ ms }: { ms: number }) {
    return (
        <time dateTime={new Date(ms).toISOString()} title={utcText(ms)}>
            {timeText(ms)}
        </time>
    );
}

/// Says why a document cannot be shown, or that it is being read.
export function Missing({ problem }: { problem: RestProblem | undefined }) {
    return problem === undefined ? <p class="quiet">Reading …</p> : <p class="refusal">{problem.detail}</p>;
}

export interface Notice {
    text: string;
    isBad: boolean;
    undo?: () => Promise<void>;
}

/// The last thing that was done, for the person who did it.
export const notice = new Observable<Notice | null>(null);

export function tell(text: string, undo?: () => Promise<void>): void {
    notice.set({ text, isBad: false, ...(undo === undefined ? {} : { undo }) });
}

/// Gives changed values of a document to `put`. The notice `text` takes them back, unless the host does not show one of them.
export async function saveValues(schema: Schema, values: Values, changed: Values, put: (values: Values, isUndo: boolean) => Promise<void>, text: string): Promise<void> {
    const keys = Object.keys(changed);
    const before = Object.fromEntries(keys.map((key) => [key, values[key]]));
    await put(changed, false);
    const isHidden = keys.some((key) => schema.properties?.[key]?.writeOnly === true || values[key] === undefined);
    tell(text, isHidden ? undefined : () => put(before, true));
}

export function tellRefusal(error: unknown): void {
    notice.set({ text: sentenceOf(error), isBad: true });
}

/// Shows the last notice until it is closed or replaced.
export function NoticeBar() {
    const shown = useObservable(notice);
    const undo = shown?.undo;
    const takeBack = () => {
        notice.set(null);
        undo?.().then(() => tell("Taken back."), tellRefusal);
    };
    return (
        <div class="noticebar" role="status" aria-live="polite">
            {shown !== null && (
                <p class={shown.isBad ? "notice bad" : "notice"}>
                    <span>{shown.text}</span>
                    {undo !== undefined && <button type="button" onClick={takeBack}>Undo</button>}
                    <button type="button" class="plain" aria-label="Close this message" onClick={() => notice.set(null)}>✕</button>
                </p>
            )}
        </div>
    );
}

/// A button that runs a request and shows that it runs. A refusal goes to the notices.
export function ActionButton(props: {
    needs: Role;
    action: () => Promise<void>;
    children: ComponentChildren;
    class?: string;
    label?: string;
    isDisabled?: boolean;
}) {
    const [isBusy, setBusy] = useState(false);
    const isAllowed = mayActAs(props.needs);
    const run = () => {
        if (isBusy) {
            return;
        }
        setBusy(true);
        props.action().catch(tellRefusal).finally(() => setBusy(false));
    };
    return (
        <button
            type="button"
            class={props.class}
            aria-label={props.label}
            aria-busy={isBusy}
            disabled={!isAllowed || props.isDisabled === true}
            title={isAllowed ? undefined : `This needs the role ${props.needs}.`}
            onClick={run}
        >
            {props.children}
            {isBusy && <progress aria-label="Under way" />}
        </button>
    );
}

/// A dialog over the page. Escape and a press on "Cancel" close it; the keyboard stays inside.
export function Dialog(props: { title: string; onClose: () => void; children: ComponentChildren }) {
    const element = useRef<HTMLDialogElement>(null);
    useEffect(() => {
        const dialog = element.current;
        dialog?.showModal();
        return () => dialog?.close();
    }, []);
    return (
        <dialog ref={element} aria-label={props.title} onClose={props.onClose}>
            <h2>{props.title}</h2>
            {props.children}
        </dialog>
    );
}

/// A question before something that cannot be undone.
export function Question(props: { title: string; text: string; answer: string; action: () => Promise<void>; onClose: () => void }) {
    const run = () => props.action().finally(props.onClose);
    return (
        <Dialog title={props.title} onClose={props.onClose}>
            <p>{props.text}</p>
            <div class="row end">
                <button type="button" onClick={props.onClose}>Cancel</button>
                <ActionButton needs="viewer" class="danger" action={run}>{props.answer}</ActionButton>
            </div>
        </Dialog>
    );
}
