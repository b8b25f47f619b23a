import { useId, useState } from "preact/hooks";
import { request, type Role, sentenceOf } from "../../client/rest";
import { useResource } from "../../client/resources";
import { Card, Missing, Question, tell } from "../../parts/basics";
import { Ago, Head, RoleSelect } from "./fields";

interface Token {
    name: string;
    role: Role;
    end: string | null;
    lastUse: string | null;
    ended: boolean;
}

/// The tokens of programs, and a form for a further one.
export function Tokens() {
    const tokens = useResource<{ _embedded?: { item: Token[] } }>("/tokens", 5_000);
    const [doomed, setDoomed] = useState("");
    const list = tokens.data === undefined ? undefined : (tokens.data._embedded?.item ?? []);
    const revoke = async () => {
        await request("DELETE", `/tokens/${encodeURIComponent(doomed)}`).then(() => tell(`The token ${doomed} is revoked.`)).finally(tokens.reload);
    };
    return (
        <>
            <Card title="Tokens of programs" isOld={tokens.isOld}>
                {list === undefined ? <Missing problem={tokens.problem} /> : list.length === 0 ? <p class="quiet">There are no tokens.</p> : (
                    <div class="tablebox" tabIndex={0} role="group" aria-label="Tokens">
                        <table>
                            <Head titles={["Name", "Role", "End", "Last use"]} />
                            <tbody>
                                {list.map((token) => <TokenRow key={token.name} token={token} revoke={() => setDoomed(token.name)} />)}
                            </tbody>
                        </table>
                    </div>
                )}
            </Card>
            <MakeToken done={tokens.reload} />
            {doomed !== "" && (
                <Question
                    title="Revoke the token?"
                    text={`Programs with the token “${doomed}” are refused from now on. This cannot be undone.`}
                    answer="Revoke"
                    action={revoke}
                    onClose={() => setDoomed("")}
                />
            )}
        </>
    );
}

function TokenRow({ token, revoke }: { token: Token; revoke: () => void }) {
    return (
        <tr>
            <th scope="row">{token.name}</th>
            <td>{token.role}</td>
            <td>{token.end === null ? <span class="quiet">none</span> : <Ago text={token.end} />}{token.ended && <span class="tag">has ended</span>}</td>
            <td><Ago text={token.lastUse} /></td>
            <td><div class="row end tight"><button type="button" class="danger" aria-label={`Revoke ${token.name}`} onClick={revoke}>Revoke …</button></div></td>
        </tr>
    );
}

function MakeToken({ done }: { done: () => Promise<void> }) {
    const id = useId();
    const [name, setName] = useState("");
    const [role, setRole] = useState<Role>("viewer");
    const [made, setMade] = useState("");
    const [refusal, setRefusal] = useState("");
    const [isBusy, setBusy] = useState(false);
    const make = (event: Event) => {
        event.preventDefault();
        setBusy(true);
        request("POST", "/tokens", { body: { name, role } }).then((reply) => {
            setMade((reply.json as { token: string }).token);
            setName("");
            setRefusal("");
            return done();
        }).catch((error: unknown) => setRefusal(sentenceOf(error))).finally(() => setBusy(false));
    };
    return (
        <Card title="Make a token">
            {made !== "" && <p role="status">The token, shown once: <code class="mono">{made}</code></p>}
            <form class="form" onSubmit={make} aria-label="Make a token">
                <div class="field">
                    <label for={`${id}-name`}>Name of the program</label>
                    <input id={`${id}-name`} value={name} autocomplete="off" maxLength={64} onInput={(event) => setName(event.currentTarget.value)} />
                </div>
                <div class="field">
                    <label for={`${id}-role`}>Role</label>
                    <RoleSelect id={`${id}-role`} value={role} edit={setRole} />
                </div>
                {refusal !== "" && <p class="refusal wide" role="alert">{refusal}</p>}
                <div class="row wide"><button type="submit" class="primary" disabled={name === "" || isBusy}>Make</button></div>
            </form>
        </Card>
    );
}
