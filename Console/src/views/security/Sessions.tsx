import { request, type Role } from "../../client/rest";
import { useResource } from "../../client/resources";
import { ActionButton, Card, Missing } from "../../parts/basics";
import { durationText } from "../../parts/format";

interface OpenSession {
    id: string;
    user: string;
    role?: Role;
    source?: string;
    idleLeftSec: number;
    lifeLeftSec: number;
    isOwn: boolean;
}

/// The logins that are open.
export function Sessions() {
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
