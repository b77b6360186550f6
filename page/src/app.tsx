import { useCallback, useEffect, useState } from "react";
import { AlgorithmsView } from "./algorithms/algorithms_view";
import { get, onUnauthorised, remove } from "./api/client";
import type { ServerInfo } from "./api/types";
import { useLoaded } from "./common/loaded";
import { Notice } from "./common/notice";
import { useRoute } from "./common/route";
import { live } from "./common/server";
import { EventsView } from "./events/events_view";
import { CommonSettingsView } from "./form/common_settings_view";
import { Header } from "./header";
import { Login } from "./login";
import { StreamView } from "./streams/stream_view";
import { StreamsView } from "./streams/streams_view";

function View({ route }: { route: string[] }) {
    switch (route[0]) {
        case "settings":
            return <CommonSettingsView />;
        case "algorithms":
            return <AlgorithmsView />;
        case "events":
            return <EventsView />;
        default:
            return route[1] === undefined ? (
                <StreamsView />
            ) : (
                <StreamView key={route[1]} id={route[1]} tab={route[2] ?? "live"} />
            );
    }
}

export function App() {
    const route = useRoute();
    const [locked, setLocked] = useState(false);
    const info = useLoaded("info", () => get<ServerInfo>("info"), 15000);
    useEffect(() => onUnauthorised(() => setLocked(true)), []);
    const reload = info.reload;
    const unlock = useCallback(() => {
        setLocked(false);
        live.restart();
        reload();
    }, [reload]);

    async function signOut() {
        await remove("session");
        setLocked(true);
    }

    return (
        <>
            <a className="skip" href="#content" onClick={skipToContent}>
                Skip to the content
            </a>
            <Header
                section={route[0] ?? "streams"}
                locked={locked}
                onSignOut={info.value?.token_required ? () => void signOut() : undefined}
            />
            <main id="content" tabIndex={-1}>
                {info.value?.safe_mode && (
                    <Notice kind="warning">
                        <strong>Safe mode.</strong> The configuration file is not used: {info.value.safe_mode}
                    </Notice>
                )}
                {info.problem !== undefined && !locked && <Notice kind="error">{info.problem}</Notice>}
                {locked ? <Login onDone={unlock} /> : <View route={route} />}
            </main>
            <footer>
                qel {info.value?.version ?? ""} <a href="licences.txt">Licences</a>
            </footer>
        </>
    );
}

function skipToContent(event: React.MouseEvent): void {
    // The part of the address behind the '#' says where the page is; it must not change.
    event.preventDefault();
    document.getElementById("content")?.focus();
}
