import { useResource } from "../../client/resources";
import { Card, Light } from "../../parts/basics";

/// How this page came, and the certificate of the host's own authority.
export function Certificates() {
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
