import OrvLauncher.Screens
import QtQuick

// The repositories of a project: what is changed, what is done with it, the branches and the history.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property GitModel git: model.git?.projectID === detail.projectID ? model.git : null
    // Where there are several repositories, another one can be chosen beside one that can't be read.
    readonly property string shown: git === null || git.state === "loading" ? "loading" : git.state === "none" || (git.state === "failed" && repositories.count < 2) ? git.state : "ready"

    // Others work on the same files, so the page follows them as long as somebody may read it.
    readonly property bool followed: visible && Window.active

    function follow() {
        if (page.git) {
            page.git.lookedAt = page.followed;
        }
    }

    Instantiator {
        id: repositories

        model: page.git?.repositories ?? null
        delegate: QtObject {}
    }

    onFollowedChanged: follow()
    onGitChanged: follow()
    Component.onCompleted: page.git?.refreshNow()
    Component.onDestruction: {
        if (page.git) {
            page.git.lookedAt = false;
        }
    }

    Loader {
        anchors.fill: parent
        focus: true
        sourceComponent: page.shown === "ready" ? workspace : page.shown === "none" ? nothing : page.shown === "failed" ? failure : waiting
    }

    Component {
        id: workspace

        GitWorkspace {
            focus: true
            model: page.model
            nav: page.nav
            git: page.git
            narrow: page.narrow
        }
    }

    Component {
        id: waiting

        Item {
            Row {
                anchors.centerIn: parent
                spacing: Theme.space8

                // Most are read before it could be seen.
                SequentialAnimation on opacity {
                    PropertyAction {
                        value: 0
                    }

                    PauseAnimation {
                        duration: Theme.tooltipDelay
                    }

                    NumberAnimation {
                        to: 1
                        duration: Theme.durationFast
                    }
                }

                Spinner {
                    anchors.verticalCenter: parent.verticalCenter
                    size: Theme.icon
                }

                Label {
                    color: Theme.text2
                    text: qsTr("Looking at the repository…")
                }
            }
        }
    }

    Component {
        id: nothing

        Item {
            EmptyState {
                anchors.centerIn: parent
                anchors.verticalCenterOffset: -Theme.emptyLift
                picture: "uncommitted"
                heading: qsTr("There is no repository here")
                text: page.git.note || qsTr("Start one, and git keeps every step of %1.").arg(page.detail.name)

                Button {
                    primary: true
                    enabled: !page.git.isBusy
                    glyph: "git-branch-plus"
                    text: qsTr("Start a repository")
                    onClicked: page.git.initRepository()
                }
            }
        }
    }

    Component {
        id: failure

        Item {
            EmptyState {
                anchors.centerIn: parent
                anchors.verticalCenterOffset: -Theme.emptyLift
                picture: "no-results"
                heading: qsTr("Git can't read this repository")
                text: page.git.problem

                Button {
                    glyph: "refresh-cw"
                    text: qsTr("Try again")
                    onClicked: page.git.refreshNow()
                }
            }
        }
    }
}
