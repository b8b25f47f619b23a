import { useRef, useState } from "preact/hooks";
import { mayActAs, request, sentenceOf } from "../../client/rest";
import { type Resource, useResource } from "../../client/resources";
import { ActionButton, Card, Light, Missing, Question, tell, tellRefusal } from "../../parts/basics";
import { bytesText } from "../../parts/format";

interface JobList {
    jobs: { name: string; bytes: number; loaded: boolean; modified: boolean }[];
}

interface Report {
    job: string;
    faults: string[];
    protocols: Record<string, { source: string; takenOver: string[]; reset: string[]; skipped: string[]; lines: string[] }>;
}

type Job = JobList["jobs"][number];

const MAX_BYTES = 1024 * 1024;
const LIST_MS = 5_000;

let before = ""; // the job that was loaded before the last load from this page

function pathOf(name: string): string {
    return `/jobs/${encodeURIComponent(name)}`;
}

/// The jobs, and what the last load took over.
export function Jobs() {
    const list = useResource<JobList>("/jobs", LIST_MS);
    const jobs = list.data?.jobs;
    const loaded = jobs?.find((job) => job.loaded)?.name ?? "";
    const report = useResource<Report>(loaded === "" ? null : `${pathOf(loaded)}/report`);
    const [doomed, setDoomed] = useState<Job | null>(null);
    const changed = async () => {
        await list.reload();
        await report.reload();
    };
    const load = async (name: string) => {
        await request("POST", `${pathOf(name)}/load`);
        before = loaded;
        await changed();
        tell(`The job ${name} is loaded.`);
    };
    const remove = async (name: string) => {
        try {
            await request("DELETE", pathOf(name));
            tell(`The job ${name} is deleted.`);
        } catch (error) {
            tellRefusal(error);
        }
        await list.reload();
    };
    return (
        <div class="stack">
            <Card title="Jobs" isOld={list.isOld}>
                {jobs === undefined ? <Missing problem={list.problem} /> : <JobTable jobs={jobs} load={load} changed={changed} remove={setDoomed} />}
            </Card>
            <div class="grid">
                <CopyCard changed={changed} />
                <UploadCard jobs={jobs ?? []} changed={changed} />
            </div>
            <ReportCard report={report} back={before !== "" && before !== loaded ? () => load(before) : undefined} />
            {doomed !== null && (
                <Question
                    title="Delete the job?"
                    text={`The job “${doomed.name}” and its file are deleted. This cannot be undone.`}
                    answer="Delete"
                    action={() => remove(doomed.name)}
                    onClose={() => setDoomed(null)}
                />
            )}
        </div>
    );
}

interface TableProps {
    jobs: Job[];
    load: (name: string) => Promise<void>;
    changed: () => Promise<void>;
    remove: (job: Job) => void;
}

function JobTable({ jobs, load, changed, remove }: TableProps) {
    const save = async (name: string) => {
        await request("POST", `${pathOf(name)}/save`);
        await changed();
        tell(`The job ${name} is saved.`);
    };
    return (
        <div class="tablebox" tabIndex={0} role="group" aria-label="Jobs">
            <table>
                <thead>
                    <tr>
                        <th scope="col">Name</th>
                        <th scope="col">State</th>
                        <th scope="col" class="number">Size</th>
                        <th scope="col"><span class="hidden">Change</span></th>
                    </tr>
                </thead>
                <tbody>
                    {jobs.map((job) => (
                        <tr key={job.name}>
                            <th scope="row">{job.name}</th>
                            <td>
                                {job.loaded && <Light tone="good">loaded</Light>}
                                {job.modified && <span class="quiet">, has changes that are not saved yet</span>}
                            </td>
                            <td class="number">{bytesText(job.bytes)}</td>
                            <td>
                                <div class="row end tight">
                                    {job.loaded
                                        ? <ActionButton needs="engineer" label={`Save ${job.name}`} action={() => save(job.name)}>Save</ActionButton>
                                        : <ActionButton needs="operator" label={`Load ${job.name}`} action={() => load(job.name)}>Load</ActionButton>}
                                    <a class="button" href={pathOf(job.name)} download={`${job.name}.zpjob`} aria-label={`Download ${job.name}`}>Download</a>
                                    <button
                                        type="button"
                                        class="danger"
                                        aria-label={`Delete ${job.name}`}
                                        disabled={job.loaded || !mayActAs("engineer")}
                                        title={job.loaded ? "The loaded job cannot be deleted." : undefined}
                                        onClick={() => remove(job)}
                                    >
                                        Delete …
                                    </button>
                                </div>
                            </td>
                        </tr>
                    ))}
                </tbody>
            </table>
        </div>
    );
}

function CopyCard({ changed }: { changed: () => Promise<void> }) {
    const [name, setName] = useState("");
    const copy = async () => {
        await request("POST", `${pathOf(name)}/save`);
        setName("");
        await changed();
        tell(`The loaded job is copied to ${name}.`);
    };
    return (
        <Card title="Copy the loaded job">
            <div class="field">
                <label for="job-copy">New name</label>
                <div class="row">
                    <input id="job-copy" value={name} maxLength={63} spellcheck={false} onInput={(event) => setName(event.currentTarget.value)} />
                    <ActionButton needs="engineer" isDisabled={name === ""} action={copy}>Copy</ActionButton>
                </div>
            </div>
        </Card>
    );
}

function UploadCard({ jobs, changed }: { jobs: Job[]; changed: () => Promise<void> }) {
    const input = useRef<HTMLInputElement>(null);
    const [file, setFile] = useState<File | null>(null);
    const [refusal, setRefusal] = useState("");
    const name = file?.name.replace(/\.zpjob$/, "") ?? "";
    const isTooLong = file !== null && file.size > MAX_BYTES;
    const fault = isTooLong ? `The file has ${bytesText(file.size)}; the host takes at most ${bytesText(MAX_BYTES)}.` : refusal;
    const replaces = jobs.some((job) => job.name === name);
    const choose = (chosen: File | null) => {
        setFile(chosen);
        setRefusal("");
    };
    const upload = async () => {
        if (file === null) {
            return;
        }
        try {
            await request("PUT", pathOf(name), { body: file });
        } catch (error) {
            setRefusal(sentenceOf(error)); // beside the field
            return;
        }
        if (input.current !== null) {
            input.current.value = "";
        }
        choose(null);
        await changed();
        tell(`The job ${name} is uploaded.`);
    };
    return (
        <Card title="Upload a job">
            <div class="field">
                <label for="job-file">File (.zpjob)</label>
                <div class="row">
                    <input
                        id="job-file"
                        ref={input}
                        type="file"
                        accept=".zpjob"
                        aria-describedby="job-file-hint"
                        aria-invalid={fault !== ""}
                        onChange={(event) => choose(event.currentTarget.files?.[0] ?? null)}
                    />
                    <ActionButton needs="engineer" isDisabled={file === null || isTooLong} action={upload}>{replaces ? "Replace" : "Upload"}</ActionButton>
                </div>
                <p id="job-file-hint" class={fault !== "" ? "refusal" : "quiet"} role="status">
                    {fault !== "" ? fault
                        : replaces ? `This replaces the job “${name}”.`
                        : `At most ${bytesText(MAX_BYTES)}.`}
                </p>
            </div>
        </Card>
    );
}

const SOURCES: Record<string, string> = {
    job: "taken from the job",
    lastGood: "taken from its last good state, since the job's document cannot be read",
    refused: "left as it was, since the job's document has no settings or another version",
    none: "left as it was, since the job has no document for it",
};

const PARTS: Record<string, string> = {
    enabled: "enabled or disabled",
    parameters: "parameters",
    outputs: "outputs",
    registerAssemblyList: "registers",
};

function partsText(parts: string[]): string {
    return parts.map((part) => PARTS[part] ?? part).join(", ");
}

function ReportCard({ report: { data: report, problem, isOld }, back }: { report: Resource<Report>; back: (() => Promise<void>) | undefined }) {
    const services = Object.entries(report?.protocols ?? {});
    const isNone = problem?.status === 404;
    return (
        <Card
            title="The last load"
            isOld={isOld}
            actions={back !== undefined && <ActionButton needs="operator" action={back}>Go back to {before}</ActionButton>}
        >
            {report === undefined ? (isNone ? <p class="quiet">No job was loaded since the start of the host.</p> : <Missing problem={problem} />) : (
                <>
                    <p>{report.job}{services.length === 0 && report.faults.length === 0 ? ": a new job, with the defaults of each service." : ""}</p>
                    {report.faults.map((fault) => <p key={fault} class="refusal">{fault}</p>)}
                    <ul class="list">
                        {services.map(([id, one]) => (
                            <li key={id} class="block">
                                <strong>{id}</strong>
                                <span>{SOURCES[one.source] ?? one.source}</span>
                                {one.takenOver.length > 0 && <span>kept: {partsText(one.takenOver)}</span>}
                                {one.reset.length > 0 && <span>reset to the defaults: {partsText(one.reset)}</span>}
                                {one.skipped.length > 0 && <span class="refusal">skipped: {partsText(one.skipped)}</span>}
                                {one.lines.map((line) => <span key={line} class="quiet">{line}</span>)}
                            </li>
                        ))}
                    </ul>
                </>
            )}
        </Card>
    );
}
