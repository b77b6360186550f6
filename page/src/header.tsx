import { routeTo } from "./common/route";
import { useConnection } from "./common/server";

const sections = [
    ["streams", "Streams"],
    ["settings", "Settings"],
    ["algorithms", "Algorithms"],
    ["events", "Events"],
] as const;

const connectionTexts = { connecting: "connecting", open: "live", lost: "connection lost, trying again" };

function ConnectionState() {
    const state = useConnection();
    return (
        <span className={`connection ${state}`} role="status">
            {connectionTexts[state]}
        </span>
    );
}

interface Props {
    section: string;
    /** Nobody has signed in who has to. */
    locked: boolean;
    /** Ends the session; nothing where none is needed. */
    onSignOut: (() => void) | undefined;
}

/** The name of the page, its sections, and whether what it shows is live. */
export function Header({ section, locked, onSignOut }: Props) {
    return (
        <header className="top">
            <a className="brand" href={routeTo("streams")}>
                qel
            </a>
            {!locked && (
                <nav aria-label="Sections">
                    {sections.map(([name, title]) => (
                        <a key={name} href={routeTo(name)} aria-current={section === name ? "page" : undefined}>
                            {title}
                        </a>
                    ))}
                </nav>
            )}
            {!locked && <ConnectionState />}
            {!locked && onSignOut && (
                <button className="small" onClick={onSignOut}>
                    Sign out
                </button>
            )}
        </header>
    );
}
