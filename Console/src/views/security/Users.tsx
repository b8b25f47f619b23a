import { useId, useState } from "preact/hooks";
import { request, type Role, sentenceOf } from "../../client/rest";
import { useResource } from "../../client/resources";
import { ActionButton, Card, Light, Missing, Question, tell, tellRefusal } from "../../parts/basics";
import { Ago, Head, RoleSelect } from "./fields";

interface User {
    name: string;
    role: Role;
    enabled: boolean;
    created: string;
    lastLogin: string | null;
}

/// The users, and a form for a further one.
export function Users() {
    const users = useResource<{ users: User[] }>("/users", 5_000);
    const [doomed, setDoomed] = useState("");
    const list = users.data?.users;
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
                            <Head titles={["Name", "Role", "Last login", "State"]} />
                            <tbody>
                                {list.map((user) => <UserRow key={user.name} user={user} reload={users.reload} remove={() => setDoomed(user.name)} />)}
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

function UserRow({ user, reload, remove }: { user: User; reload: () => Promise<void>; remove: () => void }) {
    const change = async (body: unknown) => {
        await request("PATCH", `/users/${encodeURIComponent(user.name)}`, { body }).finally(reload); // also shows the role that stays
    };
    return (
        <tr>
            <th scope="row">{user.name}</th>
            <td><RoleSelect label={`Role of ${user.name}`} value={user.role} edit={(role) => void change({ role }).catch(tellRefusal)} /></td>
            <td><Ago text={user.lastLogin} /></td>
            <td><Light tone={user.enabled ? "good" : "idle"}>{user.enabled ? "enabled" : "disabled"}</Light></td>
            <td>
                <div class="row end tight">
                    <ActionButton needs="administrator" label={`${user.enabled ? "Disable" : "Enable"} ${user.name}`} action={() => change({ enabled: !user.enabled })}>
                        {user.enabled ? "Disable" : "Enable"}
                    </ActionButton>
                    <button type="button" class="danger" aria-label={`Remove ${user.name}`} onClick={remove}>Remove …</button>
                </div>
            </td>
        </tr>
    );
}

function AddUser({ isFirst, done }: { isFirst: boolean; done: () => Promise<void> }) {
    const id = useId();
    const [name, setName] = useState("");
    const [password, setPassword] = useState("");
    const [role, setRole] = useState<Role>("viewer");
    const [refusal, setRefusal] = useState("");
    const [isBusy, setBusy] = useState(false);
    const add = (event: Event) => {
        event.preventDefault();
        setBusy(true);
        request("POST", "/users", { body: { name, role: isFirst ? "administrator" : role, password } }).then(() => {
            tell(`The user ${name} is added.`);
            setName("");
            setPassword("");
            setRefusal("");
            return done();
        }).catch((error: unknown) => setRefusal(sentenceOf(error))).finally(() => setBusy(false));
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
                <div class="row wide"><button type="submit" class="primary" disabled={name === "" || password === "" || isBusy}>Add</button></div>
            </form>
        </Card>
    );
}
