import { useId, useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { mayActAs, request, type Role, sentenceOf, session } from "../../client/rest";
import { hrefOf, route, setQuery } from "../../client/route";
import { useResource } from "../../client/resources";
import { ActionButton, Card, Light, Missing, Question, tell, tellRefusal, Time } from "../../parts/basics";
import { durationText } from "../../parts/format";

const ROLES: Role[] = ["viewer", "operator", "engineer", "administrator"];
const PARTS: [string, string, Role][] = [
    ["users", "Users", "administrator"], ["tokens", "Tokens", "administrator"], ["sessions", "Sessions", "viewer"],
    ["certificates", "Certificates", "viewer"], ["trail", "Trail", "engineer"],
];

interface User {
    name: string;
    role: Role;
    enabled: boolean;
    created: string;
    lastLogin: string | null;
}

interface Token {
    name: string;
    role: Role;
    end: string | null;
    lastUse: string | null;
    ended: boolean;
}

interface OpenSession {
    id: string;
    user: string;
    role?: Role;
    source?: string;
    idleLeftSec: number;
    lifeLeftSec: number;
    isOwn: boolean;
}

interface Trail {
    entries: { id: number; time: string; who: string; from: string; what: string; result: string }[];
    _links: { next?: { href: string }; last?: { href: string } };
}

/// Who may use the host, and what was done.
export function Security() {
    const { item } = useObservable(route);
    const present = useObservable(session);
    const part = PARTS.find(([name]) => name === item)?.[0] ?? "users";
    const needed = PARTS.find(([name]) => name === part)?.[2] ?? "administrator";
    const isOpen = present !== null && present !== "needed" && present.caller === "local";
    return (
        <div class="stack">
            {isOpen && <p class="warning">Everybody on this machine is an administrator, until there is a user or a token.</p>}
            <ul class="tabs" aria-label="Parts">
                {PARTS.map(([name, title]) => (
                    <li key={name}><a href={hrefOf("security", name)} aria-current={name === part ? "true" : undefined}>{title}</a></li>
                ))}
            </ul>
            {!mayActAs(needed) ? <p>This needs the role {needed}.</p>
                : part === "users" ? <Users />
                : part === "tokens" ? <Tokens />
                : part === "sessions" ? <Sessions />
                : part === "certificates" ? <Certificates />
                : <TrailPart />}
        </div>
    );
}

function RoleSelect({ id, value, edit, label }: { id?: string; value: Role; edit: (role: Role) => void; label?: string }) {
    return (
        <select id={id} aria-label={label} value={value} onChange={(event) => edit(event.currentTarget.value as Role)}>
            {ROLES.map((role) => <option key={role} value={role}>{role}</option>)}
        </select>
    );
}

function Ago({ text }: { text: string | null | undefined }) {
    return text === null || text === undefined || text === "" ? <span class="quiet">never</span> : <Time ms={Date.parse(text)} />;
}

function Users() {
    const users = useResource<{ users: User[] }>("/users", 5_000);
    const [doomed, setDoomed] = useState("");
    const list = users.data?.users;
    const change = async (name: string, body: unknown) => {
        await request("PATCH", `/users/${encodeURIComponent(name)}`, { body });
        await users.reload();
    };
    const remove = async () => {
        await request("DELETE", `/users/${encodeURIComponent(doomed)}`).then(() => tell(`The user ${doomed} is removed.`), tellRefusal);
        await users.reload();
    };
    return (
        <>
            <Card title="Users" isOld={users.isOld}>
                {list === undefined ? <Missing problem={users.problem} /> : list.length === 0 ? <p class="quiet">There are no users.</p> : (
                    <div class="tablebox" tabIndex={0} role="group" aria-label="Users">
                        <table>
                            <thead>
                                <tr>{["Name", "Role", "Last login", "State"].map((title) => <th key={title} scope="col">{title}</th>)}<th scope="col"><span class="hidden">Change</span></th></tr>
                            </thead>
                            <tbody>
                                {list.map((user) => (
                                    <tr key={user.name}>
                                        <th scope="row">{user.name}</th>
                                        <td><RoleSelect label={`Role of ${user.name}`} value={user.role} edit={(role) => void change(user.name, { role }).catch((error: unknown) => { tellRefusal(error); void users.reload(); })} /></td>
                                        <td><Ago text={user.lastLogin} /></td>
                                        <td><Light tone={user.enabled ? "good" : "idle"}>{user.enabled ? "enabled" : "disabled"}</Light></td>
                                        <td>
                                            <div class="row end tight">
                                                <ActionButton needs="administrator" label={`${user.enabled ? "Disable" : "Enable"} ${user.name}`} action={() => change(user.name, { enabled: !user.enabled })}>{user.enabled ? "Disable" : "Enable"}</ActionButton>
                                                <button type="button" class="danger" aria-label={`Remove ${user.name}`} onClick={() => setDoomed(user.name)}>Remove …</button>
                                            </div>
                                        </td>
                                    </tr>
                                ))}
                            </tbody>
                        </table>
                    </div>
                )}
            </Card>
            <AddUser isFirst={list?.length === 0} done={users.reload} />
            {doomed !== "" && (
                <Question title="Remove the user?" text={`The user “${doomed}” is removed, and the user's sessions end.`} answer="Remove" action={remove} onClose={() => setDoomed("")} />
            )}
        </>
    );
}

function AddUser({ isFirst, done }: { isFirst: boolean; done: () => Promise<void> }) {
    const id = useId();
    const [name, setName] = useState("");
    const [password, setPassword] = useState("");
    const [role, setRole] = useState<Role>("viewer");
    const [refusal, setRefusal] = useState("");
    const add = (event: Event) => {
        event.preventDefault();
        request("POST", "/users", { body: { name, role: isFirst ? "administrator" : role, password } }).then(() => {
            tell(`The user ${name} is added.`);
            setName("");
            setPassword("");
            setRefusal("");
            return done();
        }).catch((error: unknown) => setRefusal(sentenceOf(error)));
    };
    return (
        <Card title="Add a user">
            {isFirst && <p class="quiet">The first user is an administrator. From then on everybody must log in.</p>}
            <form class="form" onSubmit={add} aria-label="Add a user">
                <div class="field">
                    <label for={`${id}-name`}>Name</label>
                    <input id={`${id}-name`} value={name} autocomplete="off" maxLength={64} onInput={(event) => setName(event.currentTarget.value)} />
                </div>
                <div class="field">
                    <label for={`${id}-password`}>Password</label>
                    <input id={`${id}-password`} type="password" value={password} autocomplete="new-password" maxLength={256} aria-describedby={`${id}-hint`} onInput={(event) => setPassword(event.currentTarget.value)} />
                    <span class="quiet hint" id={`${id}-hint`}>at least 15 characters</span>
                </div>
                {!isFirst && (
                    <div class="field">
                        <label for={`${id}-role`}>Role</label>
                        <RoleSelect id={`${id}-role`} value={role} edit={setRole} />
                    </div>
                )}
                {refusal !== "" && <p class="refusal wide" role="alert">{refusal}</p>}
                <div class="row wide"><button type="submit" class="primary" disabled={name === "" || password === ""}>Add</button></div>
            </form>
        </Card>
    );
}

function Tokens() {
    const id = useId();
    const tokens = useResource<{ _embedded?: { item: Token[] } }>("/tokens", 5_000);
    const [name, setName] = useState("");
    const [role, setRole] = useState<Role>("viewer");
    const [made, setMade] = useState("");
    const [refusal, setRefusal] = useState("");
    const list = tokens.data === undefined ? undefined : (tokens.data._embedded?.item ?? []);
    const add = (event: Event) => {
        event.preventDefault();
        request("POST", "/tokens", { body: { name, role } }).then((reply) => {
            setMade((reply.json as { token: string }).token);
            setName("");
            setRefusal("");
            return tokens.reload();
        }).catch((error: unknown) => setRefusal(sentenceOf(error)));
    };
    const revoke = async (doomed: string) => {
        await request("DELETE", `/tokens/${encodeURIComponent(doomed)}`);
        tell(`The token ${doomed} is revoked.`);
        await tokens.reload();
    };
    return (
        <>
            <Card title="Tokens of programs" isOld={tokens.isOld}>
                {list === undefined ? <Missing problem={tokens.problem} /> : list.length === 0 ? <p class="quiet">There are no tokens.</p> : (
                    <div class="tablebox" tabIndex={0} role="group" aria-label="Tokens">
                        <table>
                            <thead>
                                <tr>{["Name", "Role", "End", "Last use"].map((title) => <th key={title} scope="col">{title}</th>)}<th scope="col"><span class="hidden">Change</span></th></tr>
                            </thead>
                            <tbody>
                                {list.map((token) => (
                                    <tr key={token.name}>
                                        <th scope="row">{token.name}</th>
                                        <td>{token.role}</td>
                                        <td>{token.end === null ? <span class="quiet">none</span> : <Ago text={token.end} />}{token.ended && <span class="tag">has ended</span>}</td>
                                        <td><Ago text={token.lastUse} /></td>
                                        <td><ActionButton needs="administrator" class="danger" label={`Revoke ${token.name}`} action={() => revoke(token.name)}>Revoke</ActionButton></td>
                                    </tr>
                                ))}
                            </tbody>
                        </table>
                    </div>
                )}
            </Card>
            <Card title="Make a token">
                {made !== "" && <p role="status">The token, shown once: <code class="mono">{made}</code></p>}
                <form class="form" onSubmit={add} aria-label="Make a token">
                    <div class="field">
                        <label for={`${id}-name`}>Name of the program</label>
                        <input id={`${id}-name`} value={name} autocomplete="off" maxLength={64} onInput={(event) => setName(event.currentTarget.value)} />
                    </div>
                    <div class="field">
                        <label for={`${id}-role`}>Role</label>
                        <RoleSelect id={`${id}-role`} value={role} edit={setRole} />
                    </div>
                    {refusal !== "" && <p class="refusal wide" role="alert">{refusal}</p>}
                    <div class="row wide"><button type="submit" class="primary" disabled={name === ""}>Make</button></div>
                </form>
            </Card>
        </>
    );
}

function Sessions() {
    const sessions = useResource<{ sessions: OpenSession[] }>("/sessions", 5_000);
    const list = sessions.data?.sessions;
    const end = async (id: string) => {
        await request("DELETE", `/sessions/${encodeURIComponent(id)}`);
        await sessions.reload();
    };
    return (
        <Card title="Sessions" isOld={sessions.isOld}>
            {list === undefined ? <Missing problem={sessions.problem} /> : list.length === 0 ? <p class="quiet">Nobody is logged in.</p> : (
                <ul class="list">
                    {list.map((one) => (
                        <li key={one.id}>
                            <span>{one.user}{one.isOwn && <span class="tag">this session</span>} <span class="quiet">{one.source ?? ""}</span></span>
                            <span class="row">
                                <span class="quiet number">ends in {durationText(Math.min(one.idleLeftSec, one.lifeLeftSec))} without a request</span>
                                <ActionButton needs="viewer" label={`End the session of ${one.user}`} action={() => end(one.id)}>End</ActionButton>
                            </span>
                        </li>
                    ))}
                </ul>
            )}
        </Card>
    );
}

function Certificates() {
    const authority = useResource<string>("/authority");
    const isEncrypted = location.protocol === "https:";
    return (
        <Card title="Certificates">
            <p><Light tone={isEncrypted ? "good" : "idle"}>{isEncrypted ? "This page came over HTTPS." : "This page came over plain HTTP from this machine."}</Light></p>
            {authority.data !== undefined ? (
                <p>The host has made its own authority. <a class="button" href="/authority" download="zucontrol-authority.pem">Download its certificate</a></p>
            ) : (
                <p class="quiet">The host has no authority of its own: it was started without --https or with a certificate of the plant.</p>
            )}
            <p class="quiet">Problems with certificates, such as an end that comes near, are on the overview.</p>
        </Card>
    );
}

function TrailPart() {
    const { query } = useObservable(route);
    const filters = ["who", "what", "from"] as const;
    const chosen = filters.map((name) => [name, query.get(name) ?? ""] as const).filter(([, value]) => value !== "");
    const first = `/audit?${new URLSearchParams([...chosen.map(([name, value]) => [name, value]), ["limit", "100"]]).toString()}`;
    const start = useResource<Trail>(first);
    const newest = start.data?._links.last?.href ?? null;
    const trail = useResource<Trail>(newest, 3_000);
    const entries = trail.data?.entries ?? start.data?.entries;
    return (
        <Card title="Trail" isOld={trail.isOld}>
            <div class="row">
                {filters.map((name) => (
                    <label key={name} class="row tight">
                        {name[0]?.toUpperCase() + name.slice(1)}
                        <input type="search" value={query.get(name) ?? ""} onInput={(event) => setQuery({ [name]: event.currentTarget.value })} />
                    </label>
                ))}
            </div>
            {entries === undefined ? <Missing problem={start.problem} /> : (
                <div class="tablebox tall" tabIndex={0} role="group" aria-label="Trail">
                    <table>
                        <thead>
                            <tr>{["Time", "Who", "From", "What", "Result"].map((title) => <th key={title} scope="col">{title}</th>)}</tr>
                        </thead>
                        <tbody>
                            {[...entries].reverse().map((one) => (
                                <tr key={one.id}>
                                    <td><Ago text={one.time} /></td>
                                    <td>{one.who}</td>
                                    <td>{one.from}</td>
                                    <td>{one.what}</td>
                                    <td>{one.result}</td>
                                </tr>
                            ))}
                        </tbody>
                    </table>
                </div>
            )}
        </Card>
    );
}
