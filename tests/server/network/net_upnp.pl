# Walks every media server on the network with Net::UPnP and prints the titles.
use strict;
use warnings;
use Net::UPnP::ControlPoint;
use Net::UPnP::AV::MediaServer;

sub walk {
    my ($server, $id, $depth) = @_;
    return if $depth > 8;
    for my $content ($server->getcontentlist(ObjectID => $id)) {
        print $content->gettitle(), "\n";
        walk($server, $content->getid(), $depth + 1) if $content->iscontainer();
    }
}

my $point = Net::UPnP::ControlPoint->new();
my @devices = $point->search(st => 'urn:schemas-upnp-org:device:MediaServer:1', mx => 1);
die "no media server\n" unless @devices;
for my $device (@devices) {
    my $server = Net::UPnP::AV::MediaServer->new();
    $server->setdevice($device);
    walk($server, 0, 0);
}
